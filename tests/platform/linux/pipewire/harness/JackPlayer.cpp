#include "tests/platform/linux/pipewire/harness/JackPlayer.h"

#include <chrono>
#include <sstream>

namespace audrel::pwtest {

namespace {

using namespace std::chrono_literals;

constexpr auto answerTimeout = 20s;

}  // namespace

std::unique_ptr<support::ChildProcess> startJackProgram(const std::string& socketPath,
                                                        std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "pw-jack");
  return support::ChildProcess::start({.arguments = std::move(arguments),
                                       .environment = {{"PIPEWIRE_REMOTE", socketPath}},
                                       .showsErrors = false});
}

JackPlayer::JackPlayer(const std::string& socketPath, const std::string& name,
                       const std::vector<std::string>& options)
    : name_(name) {
  std::vector<std::string> arguments = {AUDREL_TEST_JACK_PLAYER, name};
  arguments.insert(arguments.end(), options.begin(), options.end());
  process_ = startJackProgram(socketPath, std::move(arguments));
  isReady_ = process_ && process_->readLine(answerTimeout) == "ready";
}

std::string JackPlayer::ask(const std::string& command) {
  process_->writeLine(command);
  return process_->readLine(answerTimeout).value_or("");
}

bool JackPlayer::connect(const std::string& output, const std::string& input) {
  return ask("connect " + output + " " + input) == "ok";
}

bool JackPlayer::disconnect(const std::string& output, const std::string& input) {
  return ask("disconnect " + output + " " + input) == "ok";
}

bool JackPlayer::connectToSpeakers() {
  return connect(name_ + ":out_1", "speakers:playback_FL") &&
         connect(name_ + ":out_2", "speakers:playback_FR");
}

bool JackPlayer::disconnectFromSpeakers() {
  return disconnect(name_ + ":out_1", "speakers:playback_FL") &&
         disconnect(name_ + ":out_2", "speakers:playback_FR");
}

std::vector<std::string> JackPlayer::connections(const std::string& port) {
  std::istringstream lines(ask("connections " + name_ + ":" + port));
  std::vector<std::string> names;
  std::string name;
  while (std::getline(lines, name, '\t')) {
    names.push_back(name);
  }
  return names;
}

std::pair<std::uint32_t, std::uint32_t> JackPlayer::playbackLatency(const std::string& port) {
  std::istringstream words(ask("latency " + name_ + ":" + port));
  std::pair<std::uint32_t, std::uint32_t> latency = {UINT32_MAX, 0};
  words >> latency.first >> latency.second;
  return latency;
}

JackPlayer::Report JackPlayer::report() {
  std::istringstream words(ask("report"));
  Report report;
  words >> report.playedFrames >> report.shortestQuantum >> report.longestQuantum;
  return report;
}

}  // namespace audrel::pwtest
