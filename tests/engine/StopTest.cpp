#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "tests/engine/EngineTest.h"
#include "tests/engine/ExpectedJournal.h"
#include "tests/fakes/ScopedCommaLocale.h"

namespace audrel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class Stop : public EngineTest {
 protected:
  std::string stoppedLineAfter(std::chrono::milliseconds elapsed) {
    EXPECT_EQ(start(), std::nullopt);
    world.clock.advance(elapsed);
    engine->stop();
    return world.journal.lines().back();
  }
};

TEST_F(Stop, whenIdleAnswersNothingAndDoesNothing) {
  EXPECT_EQ(engine->stop(), std::nullopt);
  EXPECT_THAT(world.journal.lines(), IsEmpty());
}

TEST_F(Stop, isTheWholeSequence) {
  ASSERT_EQ(start(), std::nullopt);
  world.clock.advance(2s);
  world.journal.clear();
  engine->stop();
  EXPECT_THAT(
      world.journal.lines(),
      ElementsAre("AudioDeviceStop(201, ioProc 1) -> status 0",
                  "AudioDeviceDestroyIOProcID(201, ioProc 1) -> status 0",
                  "writerQueue.sync begins",  //
                  "file closed: new.wav",     //
                  "writerQueue.sync ends", "AudioHardwareDestroyAggregateDevice(201) -> status 0",
                  "AudioHardwareDestroyProcessTap(101) -> status 0",  //
                  "now() -> 2 s", expected::info("Recording stopped — elapsed=2.0s underruns=0")));
}

TEST_F(Stop, waitsForEveryQueuedWriteAndClosesTheFileBehindIt) {
  ASSERT_EQ(start(), std::nullopt);
  cycle(512);
  cycle(256);
  world.journal.clear();
  engine->stop();
  EXPECT_THAT(
      world.journal.lines(),
      ElementsAre("AudioDeviceStop(201, ioProc 1) -> status 0",
                  "AudioDeviceDestroyIOProcID(201, ioProc 1) -> status 0",
                  "writerQueue.sync begins",       //
                  "writerQueue runs item 1",       //
                  "file.write(512 frames) -> ok",  //
                  "writerQueue runs item 2",       //
                  "file.write(256 frames) -> ok",  //
                  "file closed: new.wav",          //
                  "writerQueue.sync ends",         //
                  "AudioHardwareDestroyAggregateDevice(201) -> status 0",
                  "AudioHardwareDestroyProcessTap(101) -> status 0",  //
                  "now() -> 0 s", expected::info("Recording stopped — elapsed=0.0s underruns=0")));
}

TEST_F(Stop, answersNothingAfterARecordingTooAndTheFileIsCompleteAndClosed) {
  ASSERT_EQ(start(), std::nullopt);
  cycle();
  EXPECT_EQ(engine->stop(), std::nullopt);
  EXPECT_EQ(world.audio.files.front()->writes.size(), 1U);
  EXPECT_FALSE(world.audio.files.front()->isOpen);
}

TEST_F(Stop, leavesTheEngineRecordingSinceItsDateUntilItsLineIsLogged) {
  ASSERT_EQ(start(), std::nullopt);
  cycle();
  const auto date = engine->startDate();
  std::size_t lines = 0;
  world.journal.whenAdded = [&](const std::string& line) {
    EXPECT_TRUE(engine->isRecording()) << line;
    EXPECT_EQ(engine->startDate(), date) << line;
    ++lines;
  };
  world.journal.clear();
  engine->stop();
  EXPECT_EQ(lines, world.journal.lines().size());
  EXPECT_FALSE(engine->isRecording());
}

TEST_F(Stop, leavesTheEngineIdle) {
  ASSERT_EQ(start(), std::nullopt);
  engine->stop();
  EXPECT_FALSE(engine->isRecording());
  EXPECT_EQ(engine->startDate(), std::nullopt);
  EXPECT_FALSE(Inspector::hasIOProc(*engine));
  EXPECT_EQ(Inspector::aggregateDeviceID(*engine), 0U);
  EXPECT_EQ(Inspector::tapID(*engine), 0U);
  EXPECT_FALSE(Inspector::hasAudioFile(*engine));
  EXPECT_THAT(world.hardware.taps(), IsEmpty());
  EXPECT_THAT(world.hardware.aggregateDevices(), IsEmpty());
  EXPECT_EQ(world.hardware.installedIOProcs(), 0U);
}

TEST_F(Stop, keepsTheSource) {
  const auto radio = RecordingSource::process(70, "Radio", std::nullopt);
  ASSERT_EQ(start(radio), std::nullopt);
  engine->stop();
  EXPECT_EQ(engine->source(), radio);
}

TEST_F(Stop, aSecondTimeDoesNothing) {
  ASSERT_EQ(start(), std::nullopt);
  engine->stop();
  world.journal.clear();
  EXPECT_EQ(engine->stop(), std::nullopt);
  EXPECT_THAT(world.journal.lines(), IsEmpty());
}

TEST_F(Stop, ignoresEveryStatus) {
  ASSERT_EQ(start(), std::nullopt);
  world.hardware.fail(Call::deviceStop, 1);
  world.hardware.fail(Call::destroyIOProcID, 2);
  world.hardware.fail(Call::destroyAggregateDevice, 3);
  world.hardware.fail(Call::destroyProcessTap, 4);
  world.journal.clear();
  EXPECT_EQ(engine->stop(), std::nullopt);
  EXPECT_THAT(
      world.journal.lines(),
      ElementsAre("AudioDeviceStop(201, ioProc 1) -> status 1",
                  "AudioDeviceDestroyIOProcID(201, ioProc 1) -> status 2",
                  "writerQueue.sync begins",  //
                  "file closed: new.wav",     //
                  "writerQueue.sync ends", "AudioHardwareDestroyAggregateDevice(201) -> status 3",
                  "AudioHardwareDestroyProcessTap(101) -> status 4",  //
                  "now() -> 0 s", expected::info("Recording stopped — elapsed=0.0s underruns=0")));
  EXPECT_FALSE(engine->isRecording());
  EXPECT_EQ(Inspector::aggregateDeviceID(*engine), 0U);
  EXPECT_EQ(Inspector::tapID(*engine), 0U);
}

TEST_F(Stop, reportsTheUnderrunsAndKeepsTheirCount) {
  ASSERT_EQ(start(), std::nullopt);
  world.audio.hasNoMemory = true;
  for (int i = 0; i < 3; ++i) {
    cycle();
  }
  engine->stop();
  EXPECT_EQ(world.journal.lines().back(),
            expected::info("Recording stopped — elapsed=0.0s underruns=3"));
  EXPECT_EQ(engine->underrunCount(), 3);
}

TEST_F(Stop, rightAfterTheStartReportsNoUnderrunsAndTenthsOfASecond) {
  EXPECT_EQ(stoppedLineAfter(240ms),
            expected::info("Recording stopped — elapsed=0.2s underruns=0"));
}

TEST_F(Stop, printsTheElapsedTimeWithOneDecimalRounded) {
  EXPECT_EQ(stoppedLineAfter(60ms), expected::info("Recording stopped — elapsed=0.1s underruns=0"));
  EXPECT_EQ(stoppedLineAfter(1949ms),
            expected::info("Recording stopped — elapsed=1.9s underruns=0"));
  EXPECT_EQ(stoppedLineAfter(3599960ms),
            expected::info("Recording stopped — elapsed=3600.0s underruns=0"));
}

TEST_F(Stop, reportsANegativeTimeWhenTheClockWasSetBack) {
  EXPECT_EQ(stoppedLineAfter(-90s),
            expected::info("Recording stopped — elapsed=-90.0s underruns=0"));
}

TEST_F(Stop, printsTheElapsedTimeWithAPointWhateverTheLocale) {
  const fakes::ScopedCommaLocale locale;
  EXPECT_EQ(stoppedLineAfter(1234567800ms),
            expected::info("Recording stopped — elapsed=1234567.8s underruns=0"));
}

}  // namespace
}  // namespace audrel
