// The servers of a desktop session, and players that know nothing of the tests.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/DesktopServer.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/ToneReading.h"

namespace audrel::pwtest {
namespace {

using testing::UnorderedElementsAre;

constexpr std::uint32_t rate = 48000;
constexpr double level = 0.5;

template <typename Number>
void put(std::ofstream& file, Number number) {
  file.write(reinterpret_cast<const char*>(&number), sizeof number);
}

/// A minute of a tone, 16-bit stereo.
void writeTone(const std::string& path, double frequency) {
  constexpr std::uint32_t frames = 60 * rate;
  std::ofstream file(path, std::ios::binary);
  file << "RIFF";
  put(file, frames * 4 + 36);
  file << "WAVEfmt ";
  put(file, std::uint32_t{16});
  put(file, std::uint16_t{1});
  put(file, std::uint16_t{2});
  put(file, rate);
  put(file, rate * 4);
  put(file, std::uint16_t{4});
  put(file, std::uint16_t{16});
  file << "data";
  put(file, frames * 4);
  for (std::uint32_t frame = 0; frame < frames; ++frame) {
    const double angle = 2 * std::numbers::pi * frequency * frame / rate;
    const auto sample = static_cast<std::int16_t>(std::lround(32767 * level * std::sin(angle)));
    put(file, sample);
    put(file, sample);
  }
}

std::string nameOf(Recorder& recorder, pid_t pid) {
  const auto application = recorder.captureHardware().runningApplication(pid);
  return application ? application->localizedName.value_or("") : "";
}

/// That the recording has the one tone at the level at which it was played and nothing of the
/// other. How long the players stall on a busy machine is theirs.
void expectToneAlone(const Recorder& recorder, double heard, double unheard) {
  const Audio audio = recorder.samples().audio();
  const std::size_t begin = firstSound(audio) + rate / 10;
  for (const Channel channel : {Channel::left, Channel::right}) {
    const ToneReading tone = readTone(audio, channel, begin, recorder.rate(), heard);
    EXPECT_NEAR(tone.highestLevel, level, 0.01);
    EXPECT_NEAR(tone.frequency, heard, 1);
    EXPECT_LT(readTone(audio, channel, begin, recorder.rate(), unheard).highestLevel, 0.005);
  }
}

TEST(DesktopServer, nativeAndPulsePlayersAreListedAndRecordedApart) {
  constexpr double native = 440;  // Hz
  constexpr double pulse = 1000;  // Hz
  const DesktopServer server;
  ASSERT_TRUE(server.isRunning());
  const std::string nativeFile = (server.folder() / "native.wav").string();
  const std::string pulseFile = (server.folder() / "pulse.wav").string();
  writeTone(nativeFile, native);
  writeTone(pulseFile, pulse);
  const auto pwPlay = server.start({"pw-play", nativeFile});
  const auto paplay = server.start({"paplay", pulseFile});
  ASSERT_TRUE(pwPlay && paplay);

  Recorder ofNative(server.socketPath());
  Recorder ofPulse(server.socketPath());
  const auto nativeProcess = ofNative.waitForProcess(pwPlay->pid());
  const auto pulseProcess = ofPulse.waitForProcess(paplay->pid());
  EXPECT_THAT(ofNative.processes(), UnorderedElementsAre(nativeProcess, pulseProcess));
  EXPECT_EQ(nameOf(ofNative, pwPlay->pid()), "pw-play");
  EXPECT_EQ(nameOf(ofPulse, paplay->pid()), "paplay");

  ASSERT_EQ(ofNative.startProcess(nativeProcess), 0);
  ASSERT_EQ(ofPulse.startProcess(pulseProcess), 0);
  ASSERT_TRUE(ofPulse.waitForMore(2 * rate));
  ASSERT_EQ(ofNative.stop(), 0);
  ASSERT_EQ(ofPulse.stop(), 0);
  expectToneAlone(ofNative, native, pulse);
  expectToneAlone(ofPulse, pulse, native);
}

TEST(DesktopServer, pulsePlayersWhosePidCannotBeTrueStayApart) {
  const DesktopServer server;
  ASSERT_TRUE(server.isRunning());
  const std::string file = (server.folder() / "tone.wav").string();
  writeTone(file, 440);
  const auto honest = server.start({"paplay", file});
  ASSERT_TRUE(honest);
  const std::string pid = "--property=application.process.id=" + std::to_string(honest->pid());
  const auto sandboxed =
      server.start({"paplay", pid, "--property=application.process.binary=somebody-else", file});
  const auto remote = server.start(
      {"paplay", pid, "--property=application.process.machine-id=another-machine", file});
  ASSERT_TRUE(sandboxed && remote);

  Recorder recorder(server.socketPath());
  EXPECT_TRUE(waitFor([&] { return recorder.processes().size() == 3; }));
}

}  // namespace
}  // namespace audrel::pwtest
