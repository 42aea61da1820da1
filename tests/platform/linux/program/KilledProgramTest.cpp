// What a kill of the program costs: what it has not written, which is counted in time. So the graph
// goes no faster than the processors do, and nothing else may keep them from the program.

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>

#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/program/harness/WavRecording.h"

namespace audrel::programtest {
namespace {

constexpr double inRealTime = 1;

class KilledWav : public WavRecording {
 protected:
  KilledWav() : WavRecording({.timesRealTime = inRealTime}) {}
};

TEST_F(KilledWav, lacksASecondAtMost) {
  const std::uint64_t frame = played();
  kill(program->pid(), SIGKILL);
  EXPECT_EQ(waitForEnd(), -1);
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
  const std::uint64_t frames = played();
  kill(program->pid(), SIGKILL);
  EXPECT_EQ(waitForEnd(), -1);
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
