#include "tests/platform/linux/pipewire/harness/DesktopServer.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "tests/platform/linux/pipewire/harness/SampleStore.h"
#include "tests/platform/linux/pipewire/harness/ToneFile.h"

namespace audrel::pwtest {

namespace {

constexpr const char* sink = R"(context.objects = [
    { factory = adapter
      args = { factory.name = support.null-audio-sink node.name = speakers
               media.class = Audio/Sink audio.position = "FL,FR" object.linger = true
               monitor.channel-volumes = false } }
]
)";

}  // namespace

DesktopServer::DesktopServer() {
  makeFolders();
  isRunning_ = startAll();
}

void DesktopServer::makeFolders() const {
  std::error_code error;
  const auto dropIns = folder_.path() / "config" / "pipewire" / "pipewire.conf.d";
  for (const auto& path : {run() / "pulse", dropIns, folder_.path() / "state",
                           folder_.path() / "cache", folder_.path() / "data"}) {
    std::filesystem::create_directories(path, error);
  }
  // The servers want their runtime folder for themselves.
  std::filesystem::permissions(run(), std::filesystem::perms::owner_all, error);
  std::ofstream(dropIns / "10-sink.conf") << sink;
}

std::unique_ptr<support::ChildProcess> DesktopServer::start(
    std::vector<std::string> arguments) const {
  const std::string base = folder_.path().string();
  return support::ChildProcess::start(
      {.arguments = std::move(arguments),
       .environment = {{"XDG_RUNTIME_DIR", run().string()},
                       {"PIPEWIRE_RUNTIME_DIR", run().string()},
                       {"PULSE_RUNTIME_PATH", (run() / "pulse").string()},
                       {"PULSE_SERVER", "unix:" + (run() / "pulse" / "native").string()},
                       {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (run() / "bus").string()},
                       {"XDG_CONFIG_HOME", base + "/config"},
                       {"XDG_STATE_HOME", base + "/state"},
                       {"XDG_CACHE_HOME", base + "/cache"},
                       {"XDG_DATA_HOME", base + "/data"}},
       .showsErrors = false});
}

bool DesktopServer::startServer(std::vector<std::string> arguments,
                                const std::filesystem::path& socket) {
  servers_.push_back(start(std::move(arguments)));
  return servers_.back() != nullptr && waitFor([&] {
           std::error_code error;
           return std::filesystem::exists(socket, error);
         });
}

bool DesktopServer::startAll() {
  const std::filesystem::path bus = run() / "bus";
  return startServer({"dbus-daemon", "--session", "--nofork", "--nopidfile",
                      "--address=unix:path=" + bus.string()},
                     bus) &&
         startServer({"pipewire"}, socketPath()) && startServer({"wireplumber"}, socketPath()) &&
         startServer({"pipewire-pulse"}, run() / "pulse" / "native") && waitUntilItPlays();
}

// WirePlumber sends away a player that comes before the sink is ready for links.
bool DesktopServer::waitUntilItPlays() const {
  const std::string file = (folder() / "silence.wav").string();
  writeTone(file, 0, 0, std::chrono::milliseconds(20));
  return waitFor([&] {
    const auto player = start({"pw-play", file});
    return player != nullptr && player->waitForEnd() == 0;
  });
}

}  // namespace audrel::pwtest
