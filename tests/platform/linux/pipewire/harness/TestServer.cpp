#include "tests/platform/linux/pipewire/harness/TestServer.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>
#include <utility>

#include "tests/support/Waiting.h"

namespace audrel::pwtest {

namespace {

using namespace std::chrono_literals;
using support::waitFor;

constexpr auto startTimeout = 10s;
constexpr auto answerTimeout = 60s;  // so long may a busy machine starve somebody

// Of the sinks that the paced driver leads, so that they drive nothing themselves.
constexpr const char* pacedGroup = "test.paced";

constexpr const char* modules = R"(
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
}
context.modules = [
    { name = libpipewire-module-rt
      args = { rtportal.enabled = false rtkit.enabled = false } flags = [ ifexists nofail ] }
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-spa-node-factory }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-access }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-link-factory }
]
)";

}  // namespace

Links stereoLinks(const std::vector<std::string>& streams,
                  const std::vector<std::string>& destinations) {
  Links links;
  for (const std::string& stream : streams) {
    for (const std::string& destination : destinations) {
      links[stream + " -> " + destination] = 2;
    }
  }
  return links;
}

Links heard(const std::vector<std::string>& streams) {
  return stereoLinks(streams, {"speakers", "audrel-tap"});
}

TestServer::TestServer(ServerOptions options) : options_(std::move(options)) {
  restart();
}

std::string TestServer::configuration() const {
  std::ostringstream text;
  text << "context.properties = { core.daemon = true core.name = pipewire-0 support.dbus = false\n"
       << "link.max-buffers = 16 default.clock.rate = " << options_.rate
       << " default.clock.allowed-rates = [ " << options_.allowedRates << " ]\n"
       << "default.clock.quantum = " << options_.quantum
       << " default.clock.min-quantum = 32 default.clock.max-quantum = 8192 }\n"
       << modules << "context.objects = [\n"
       << "{ factory = metadata args = { metadata.name = default } }\n";
  if (!options_.timesRealTime && options_.hasDriver) {
    text << "{ factory = spa-node-factory args = { factory.name = support.node.driver "
         << "node.name = Driver priority.driver = 20000 node.group = pipewire.dummy } }\n";
  }
  for (const Sink& sink : options_.sinks) {
    text << "{ factory = adapter args = { factory.name = support.null-audio-sink node.name = "
         << sink.name << " media.class = Audio/Sink object.linger = true audio.position = \""
         << sink.channels << "\"";
    if (options_.timesRealTime) {
      text << " node.group = " << pacedGroup;
    }
    text << " } }\n";
  }
  text << "]\n";
  return text.str();
}

bool TestServer::launch() {
  const std::string folder = folder_.path().string();
  std::ofstream(folder_.path() / "pipewire.conf") << configuration();
  std::vector<std::string> arguments = {"pipewire", "-c", "pipewire.conf"};
  if (options_.timesRealTime) {
    arguments = {AUDREL_TEST_SERVER, pacedGroup, std::to_string(*options_.timesRealTime)};
  }
  server_ = support::ChildProcess::start({.arguments = std::move(arguments),
                                          .environment = {{"PIPEWIRE_CONFIG_DIR", folder},
                                                          {"PIPEWIRE_RUNTIME_DIR", folder},
                                                          {"XDG_RUNTIME_DIR", folder}},
                                          .showsErrors = false});
  return server_ != nullptr;
}

std::string TestServer::ask(const std::string& command) {
  server_->writeLine(command);
  return server_->readLine(answerTimeout).value_or("nothing");
}

testing::AssertionResult TestServer::step(int cycles, const Links& links) {
  const bool isReady = waitFor([&] {
    return session_->activeLinks() == links && ask("settle") == "runs" &&
           session_->activeLinks() == links;
  });
  if (!isReady) {
    return testing::AssertionFailure()
           << "the graph does not run, or links are missing: active are "
           << testing::PrintToString(session_->activeLinks());
  }
  for (int cycle = 0; cycle < cycles; ++cycle) {
    if (!makeCycle("cycle")) {
      return testing::AssertionFailure() << "nobody finished cycle " << cycle;
    }
  }
  return testing::AssertionSuccess();
}

bool TestServer::makeCycle(const std::string& command) {
  const std::chrono::nanoseconds length(
      std::atoll(ask(command + " " + std::to_string(time_->now())).c_str()));
  time_->pass(length);
  return length > 0ns;
}

void TestServer::crash() {
  session_.reset();
  server_->end(SIGKILL);
}

void TestServer::hang() {
  kill(server_->pid(), SIGSTOP);
}

void TestServer::goOn() {
  kill(server_->pid(), SIGCONT);
}

void TestServer::restart() {
  if (!launch()) {
    return;
  }
  const auto deadline = std::chrono::steady_clock::now() + startTimeout;
  while (!isRunning() && server_->isRunning() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(5ms);
    session_ = std::make_unique<SessionManager>(socketPath(), options_.portLayout);
  }
  if (isRunning() && !options_.sinks.empty()) {
    session_->setDefaultSink(options_.sinks.front().name);
    session_->waitUntil(
        [&] {
          return std::ranges::all_of(
              options_.sinks, [&](const Sink& sink) { return session_->hasInputs(sink.name); });
        },
        startTimeout);
  }
}

}  // namespace audrel::pwtest
