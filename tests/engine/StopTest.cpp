#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>

#include "tests/engine/EngineTest.h"
#include "tests/fakes/ScopedCommaLocale.h"

namespace audrel {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;

class Stop : public EngineTest {
 protected:
  std::string stoppedLineAfter(std::chrono::milliseconds elapsed) {
    EXPECT_EQ(start(), std::nullopt);
    world.clock.advance(elapsed);
    engine->stop();
    return world.journal.lines().back();
  }

  void expectNothingLeft() {
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
};

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

TEST_F(Stop, leavesTheEngineIdleAndKeepsTheSource) {
  ASSERT_EQ(start(radio()), std::nullopt);
  engine->stop();
  expectNothingLeft();
  EXPECT_EQ(engine->source(), radio());
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
  EXPECT_EQ(engine->stop(), std::nullopt);
  expectNothingLeft();
  EXPECT_THAT(world.journal.lines(error("")), IsEmpty());
}

TEST_F(Stop, printsTheElapsedTimeWithOneDecimalRoundedAndNegativeWhenTheClockWasSetBack) {
  const std::pair<std::chrono::milliseconds, std::string> times[] = {
      {60ms, "0.1"}, {240ms, "0.2"}, {1949ms, "1.9"}, {3599960ms, "3600.0"}, {-90s, "-90.0"}};
  for (const auto& [elapsed, printed] : times) {
    EXPECT_EQ(stoppedLineAfter(elapsed),
              info("Recording stopped — elapsed=" + printed + "s underruns=0"));
  }
}

TEST_F(Stop, printsTheElapsedTimeWithAPointWhateverTheLocale) {
  const fakes::ScopedCommaLocale locale;
  EXPECT_EQ(stoppedLineAfter(1234567800ms),
            info("Recording stopped — elapsed=1234567.8s underruns=0"));
}

}  // namespace
}  // namespace audrel
