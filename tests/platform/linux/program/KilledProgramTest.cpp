// What a kill of the program costs: what it has not written, which is counted in time. So the graph
// goes no faster than the processors do, and nothing else may keep them from the program.

#include <gmock/gmock.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>

#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/program/harness/WavRecording.h"
#include "tests/support/RunTool.h"

namespace audrel::programtest {
namespace {

constexpr double inRealTime = 1;

/// What the command line makes of a recording.
support::ToolResult repair(const std::filesystem::path& recording) {
  return support::runTool({AUDREL_COMMAND, "--repair", recording});
}

void expectInUse(const std::filesystem::path& recording) {
  const auto refused = repair(recording);
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.errors, testing::HasSubstr(": in use."));
}

void expectToBecomeWhole(const std::filesystem::path& recording) {
  const auto repaired = repair(recording);
  EXPECT_EQ(repaired.exitCode, 0);
  EXPECT_EQ(repaired.errors, "");
  EXPECT_EQ(repair(recording).output, recording.string() + ": whole already\n");
}

class KilledWav : public WavRecording {
 protected:
  KilledWav() : WavRecording({.timesRealTime = inRealTime}) {}
};

TEST_F(KilledWav, lacksASecondAtMost) {
  expectInUse(recording());
  const std::uint64_t frame = played();
  kill(program->pid(), SIGKILL);
  EXPECT_EQ(waitForEnd(), -1);
  expectToBecomeWhole(recording());  // on a busy disk its header counts less
  expectRecordedUntil(frame - second);
}

/// A recording of a tone as M4A.
class M4aRecording : public Session {
 protected:
  M4aRecording() : Session({.timesRealTime = inRealTime}) {}

  void SetUp() override {
    Session::SetUp();
    ASSERT_TRUE(player.close("music"));
    ASSERT_TRUE(player.open("music", "tone:1000 f32 2 48000"));
    startProgram();
    startRecording();
    begin = player.report("music").playedFrames;
    ASSERT_TRUE(player.waitForMore("music", 4 * second));
  }

  /// How much was played since the recording started.
  std::uint64_t played() { return player.report("music").playedFrames - begin; }

  void expectRecorded(std::uint64_t frames) const {
    const pwtest::Audio audio = pwtest::readM4a(recording());
    EXPECT_GE(pwtest::framesOf(audio), frames);
    pwtest::expectUnbrokenTone(audio, pwtest::longestLead, 1000, 0.005);
  }

  std::uint64_t begin = 0;
};

TEST_F(M4aRecording, lacksASecondAtMostThroughAKill) {
  expectInUse(recording());
  const std::uint64_t frames = played();
  kill(program->pid(), SIGKILL);
  EXPECT_EQ(waitForEnd(), -1);
  expectRecorded(frames - second);
  expectToBecomeWhole(recording());
  expectRecorded(frames - second);
}

TEST_F(M4aRecording, lacksNothingThroughASignal) {
  const std::uint64_t frames = played();
  kill(program->pid(), SIGHUP);
  EXPECT_EQ(waitForEnd(), 0);
  expectRecorded(frames - pwtest::onTheWay);
}

}  // namespace
}  // namespace audrel::programtest
