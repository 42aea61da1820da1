// The servers of a desktop session, and players that know nothing of the tests.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/DesktopServer.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/ToneFile.h"
#include "tests/platform/linux/pipewire/harness/ToneReading.h"

namespace audrel::pwtest {
namespace {

using testing::UnorderedElementsAre;

constexpr std::uint32_t rate = 48000;
constexpr double level = 0.5;
constexpr std::chrono::milliseconds playTime = std::chrono::minutes(1);

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
  writeTone(nativeFile, native, level, playTime);
  writeTone(pulseFile, pulse, level, playTime);
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
  writeTone(file, 440, level, playTime);
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
