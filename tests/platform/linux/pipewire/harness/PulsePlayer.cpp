#include "tests/platform/linux/pipewire/harness/PulsePlayer.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Stamp.h"
#include "tests/support/Waiting.h"

namespace audrel::pwtest {

namespace {

void writeStamps(const std::string& path, std::uint32_t stream) {
  std::ofstream file(path, std::ios::binary);
  for (std::uint64_t frame = 0; frame < PulsePlayer::playedFrames; ++frame) {
    const StampedFrame stamped = stamp({stream, frame});
    const float samples[] = {asFloat(stamped.left), asFloat(stamped.right)};
    file.write(reinterpret_cast<const char*>(samples), sizeof samples);
  }
}

}  // namespace

PulsePlayer::PulsePlayer(const std::string& socketPath, const std::string& name,
                         std::uint32_t stampStream) {
  const std::string runtime = folder_.path().string();
  const std::string socket = runtime + "/native";
  const std::string file = runtime + "/stamps.raw";
  writeStamps(file, stampStream);
  const auto start = [&](std::vector<std::string> arguments) {
    return support::ChildProcess::start(
        {.arguments = std::move(arguments),
         .environment = {{"PIPEWIRE_REMOTE", socketPath},
                         {"PULSE_RUNTIME_PATH", runtime},
                         {"PULSE_SERVER", "unix:" + socket},
                         {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + runtime + "/no-bus"}},
         .showsErrors = false});
  };
  server_ = start({"pipewire-pulse"});
  support::waitFor([&] {
    std::error_code error;
    return std::filesystem::exists(socket, error);
  });
  // With a buffer that is longer than the file the server waits for the file's end.
  player_ = start({"paplay", "--raw", "--format=float32le", "--rate=48000", "--channels=2",
                   "--latency-msec=3000", "--property=node.name=" + name, file});
}

}  // namespace audrel::pwtest
