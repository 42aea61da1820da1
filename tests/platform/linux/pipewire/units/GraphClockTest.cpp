#include "platform/linux/pipewire/GraphClock.h"

#include <gtest/gtest.h>

namespace audrel::linuxos {
namespace {

constexpr std::uint64_t second = 1'000'000'000;
constexpr std::uint64_t quantumNanoseconds = 1024 * second / 48000;

/// Of a recording that starts at 0, in whose graph nothing has happened yet.
struct GraphClockTest : testing::Test {
  GraphClockTest() { clock.start(0); }

  GraphClock clock{48000};
};

/// The n-th cycle of a driver that started at one second.
GraphCycle cycle(std::uint64_t n, std::uint32_t clockId = 1) {
  return {.clockId = clockId,
          .position = n * 1024,
          .duration = 1024,
          .rate = 48000,
          .nsec = second + n * quantumNanoseconds};
}

TEST_F(GraphClockTest, theFirstCycleAndThoseThatFollowItMissNothing) {
  for (std::uint64_t n = 7; n < 100; ++n) {
    EXPECT_EQ(clock.advance(cycle(n)).missing, 0U);
  }
}

TEST_F(GraphClockTest, aJumpOfThePositionIsExactlyWhatWasMissed) {
  clock.advance(cycle(0));
  EXPECT_EQ(clock.advance(cycle(4)).missing, 3U * 1024);
  EXPECT_EQ(clock.advance(cycle(5)).missing, 0U);
}

TEST(GraphClock, missedFramesAreCountedAtTheRateOfTheRecording) {
  GraphClock clock(96000);
  clock.start(0);
  clock.advance(cycle(0));
  EXPECT_EQ(clock.advance(cycle(2)).missing, 2U * 1024);
}

TEST_F(GraphClockTest, aCycleThatComesAgainIsToldUnlessItMayBeTheRestOfAResampledOne) {
  EXPECT_FALSE(clock.advance(cycle(0)).isRepeated);
  const auto again = clock.advance(cycle(0));
  EXPECT_TRUE(again.isRepeated);
  EXPECT_FALSE(again.takesCycle);
  EXPECT_FALSE(clock.advance(cycle(1)).isRepeated);
  GraphClock resampling(96000);
  resampling.start(0);
  resampling.advance(cycle(0));
  const auto rest = resampling.advance(cycle(0));
  EXPECT_TRUE(rest.takesCycle && !rest.isRepeated && rest.missing == 0);
}

TEST_F(GraphClockTest, aQuantumThatChangesMissesNothing) {
  clock.advance(cycle(0));
  GraphCycle half = cycle(1);
  half.duration = 512;
  EXPECT_EQ(clock.advance(half).missing, 0U);
  GraphCycle next = half;
  next.position += 512;
  EXPECT_EQ(clock.advance(next).missing, 0U);
}

TEST_F(GraphClockTest, anotherDriverThatFollowsWithinTwoCyclesMissesNothing) {
  clock.advance(cycle(10, 1));
  GraphCycle other = cycle(0, 2);
  other.nsec = cycle(11, 1).nsec + quantumNanoseconds + quantumNanoseconds / 2;
  EXPECT_EQ(clock.advance(other).missing, 0U);
}

TEST_F(GraphClockTest, anotherDriverThatComesLateIsMeasuredByTheMonotonicClock) {
  clock.advance(cycle(10, 1));
  GraphCycle other = cycle(0, 2);
  other.nsec = cycle(11, 1).nsec + second / 2;
  EXPECT_EQ(clock.advance(other).missing, 24000U);
}

/// The n-th cycle of a driver that ran for so many cycles without the stream.
GraphCycle afterUnheard(std::uint64_t n, std::uint32_t clockId, std::uint64_t cycles) {
  GraphCycle late = cycle(n, clockId);
  late.unheard = cycles * quantumNanoseconds;
  return late;
}

TEST_F(GraphClockTest, whatAnotherDriverRanWithoutTheStreamIsCountedAndTakesNoTime) {
  clock.advance(cycle(10));
  const auto step = clock.advance(afterUnheard(11, 2, 2));
  EXPECT_EQ(step.missing, 0U);
  EXPECT_EQ(step.unheard, 2048U);
  EXPECT_TRUE(step.takesCycle);
  EXPECT_EQ(clock.advance(cycle(12, 2)).unheard, 0U);
}

TEST_F(GraphClockTest, whatIsMissingByTheMonotonicClockIsNotCountedTwice) {
  clock.advance(cycle(10));
  const auto step = clock.advance(afterUnheard(14, 2, 2));
  EXPECT_EQ(step.missing, 3U * 1024);
  EXPECT_EQ(step.unheard, 0U);
  EXPECT_EQ(clock.advance(afterUnheard(18, 1, 5)).unheard, 2U * 1024);
}

TEST_F(GraphClockTest, nothingIsUnheardBeforeTimeStartsOrInASilence) {
  EXPECT_EQ(clock.advance(afterUnheard(10, 1, 2)).unheard, 0U);
  clock.advanceTo(cycle(20).nsec);
  EXPECT_EQ(clock.advance(afterUnheard(21, 2, 2)).unheard, 0U);
}

TEST_F(GraphClockTest, aDriverThatCountsAnewIsAnotherOne) {
  clock.advance(cycle(10));
  GraphCycle anew = cycle(0);
  anew.nsec = cycle(11).nsec;
  EXPECT_EQ(clock.advance(anew).missing, 0U);
}

TEST_F(GraphClockTest, aRateThatChangesIsAnotherDriver) {
  clock.advance(cycle(10));
  GraphCycle slower = cycle(11);
  slower.rate = 44100;
  slower.position = 1'000'000;
  EXPECT_EQ(clock.advance(slower).missing, 0U);
}

/// The n-th cycle of a driver that stood still for so long before it, and counts on all the same.
GraphCycle delayed(std::uint64_t n, std::uint64_t nanoseconds) {
  GraphCycle late = cycle(n);
  late.nsec += nanoseconds;
  return late;
}

TEST_F(GraphClockTest, aStallThatADriverDoesNotCountIsMeasuredByTheMonotonicClock) {
  clock.advance(cycle(0));
  EXPECT_EQ(clock.advance(delayed(1, second / 2)).missing, 24000U);
  EXPECT_EQ(clock.advance(delayed(2, second / 2)).missing, 0U);
}

TEST_F(GraphClockTest, stallsThatADriverDoesNotCountAddUp) {
  std::uint64_t missing = 0;
  for (std::uint64_t n = 0; n < 40; ++n) {
    missing += clock.advance(delayed(n, n / 4 * second / 50)).missing;
  }
  EXPECT_NEAR(static_cast<double>(missing), 9 * 960, 4096);
}

TEST_F(GraphClockTest, aCycleThatIsLateAndMadeUpForMissesNothing) {
  for (std::uint64_t n = 0; n < 1000; ++n) {
    const std::uint64_t late = n % 10 == 0 ? 2 * quantumNanoseconds : 0;
    EXPECT_EQ(clock.advance(delayed(n, late)).missing, 0U);
  }
}

TEST(GraphClock, aSoundCardsClockMayDrift) {
  for (const std::int64_t partsPerMillion : {-300, 300}) {
    GraphClock clock(48000);
    clock.start(0);
    for (std::int64_t n = 0; n < 500'000; ++n) {
      GraphCycle drifting = cycle(static_cast<std::uint64_t>(n));
      const auto drift = n * static_cast<std::int64_t>(quantumNanoseconds) * partsPerMillion;
      drifting.nsec += static_cast<std::uint64_t>(drift / 1'000'000);
      ASSERT_EQ(clock.advance(drifting).missing, 0U) << "cycle " << n;
    }
  }
}

TEST(GraphClock, aClockThatRunsMuchTooSlowStallsNothing) {
  constexpr std::uint64_t partsPerMillion = 5000;
  for (const std::uint64_t quantum : {1024U, 8192U}) {
    GraphClock clock(48000);
    clock.start(0);
    const std::uint64_t length = quantum * second / 48000;
    for (std::uint64_t n = 0; n < 20'000; ++n) {
      const GraphCycle slow{.clockId = 1,
                            .position = n * quantum,
                            .duration = quantum,
                            .rate = 48000,
                            .nsec = second + n * (length + length * partsPerMillion / 1'000'000)};
      ASSERT_EQ(clock.advance(slow).missing, 0U) << "cycle " << n << " of " << quantum;
    }
  }
}

TEST_F(GraphClockTest, aGraphFasterThanTimeMayStandStillInBetween) {
  for (std::uint64_t n = 0; n < 200; ++n) {
    GraphCycle fast = cycle(n);
    fast.nsec = second + n * quantumNanoseconds / 20 + (n >= 100 ? second / 4 : 0);
    EXPECT_EQ(clock.advance(fast).missing, 0U);
  }
}

TEST_F(GraphClockTest, whatIsMissingIsFoundInStepsOfTenSeconds) {
  clock.advance(cycle(0));
  const std::uint64_t cyclesMissed = 55 * second / quantumNanoseconds;
  std::uint64_t missing = 0;
  std::uint64_t steps = 0;
  GraphClock::Step step{.takesCycle = false};
  while (!step.takesCycle && steps < 10) {
    step = clock.advance(cycle(cyclesMissed + steps));
    EXPECT_LE(step.missing, 480'000U);
    missing += step.missing;
    ++steps;
  }
  EXPECT_NEAR(static_cast<double>(missing), 55 * 48000, 10 * 1024);
  EXPECT_EQ(steps, 6U);
  EXPECT_EQ(clock.advance(cycle(cyclesMissed + steps)).missing, 0U);
}

TEST_F(GraphClockTest, silenceComesInStepsOfTenSeconds) {
  EXPECT_EQ(clock.advanceTo(25 * second), 480'000U);
  EXPECT_EQ(clock.advanceTo(25 * second), 480'000U);
  EXPECT_EQ(clock.advanceTo(25 * second), 240'000U);
  EXPECT_EQ(clock.advanceTo(25 * second), 0U);
}

TEST_F(GraphClockTest, cyclesOfATimeThatIsSilentAlreadyAreLeftOut) {
  clock.advance(cycle(0));
  clock.advanceTo(cycle(101).nsec);
  for (std::uint64_t n = 1; n < 101; ++n) {
    const auto step = clock.advance(cycle(n));
    EXPECT_FALSE(step.takesCycle);
    EXPECT_EQ(step.missing, 0U);
  }
  EXPECT_TRUE(clock.advance(cycle(101)).takesCycle);
}

TEST_F(GraphClockTest, theEndMissesNothingWhileNoCycleIsOverdue) {
  EXPECT_EQ(clock.finish(second / 10), 0U) << "the first cycle may be a long one";
  clock.start(second);
  clock.advance(cycle(0));
  EXPECT_EQ(clock.finish(cycle(1).nsec + second / 50), 0U);
}

TEST_F(GraphClockTest, theEndMissesWhatTheLastCycleLeft) {
  clock.advance(cycle(0));
  EXPECT_EQ(clock.finish(cycle(1).nsec + second / 4), 12000U);
}

TEST_F(GraphClockTest, theEndOfASilenceIsItsOwnMoment) {
  clock.advanceTo(second);
  EXPECT_EQ(clock.finish(second + second / 100), 480U);
}

TEST(GraphClock, silenceGoesFromTheStartToTheGivenTime) {
  GraphClock clock(48000);
  clock.start(second);
  EXPECT_EQ(clock.advanceTo(second + second / 4), 12000U);
  EXPECT_EQ(clock.advanceTo(second + second / 2), 12000U);
  EXPECT_EQ(clock.advanceTo(second), 0U) << "time does not go back";
}

TEST_F(GraphClockTest, silenceGoesOnWhereTheLastCycleEnded) {
  clock.advance(cycle(0));
  EXPECT_EQ(clock.advanceTo(cycle(1).nsec + second), 48000U);
}

TEST_F(GraphClockTest, theFirstCycleAfterSilenceMissesWhatSilenceLeft) {
  clock.advance(cycle(0));
  clock.advanceTo(cycle(1).nsec);
  GraphCycle found = cycle(0, 3);
  found.nsec = cycle(1).nsec + second / 100;
  EXPECT_EQ(clock.advance(found).missing, 480U);
}

TEST(GraphClock, silenceInSmallStepsIsAsLongAsInOne) {
  GraphClock clock(44100);
  clock.start(0);
  std::uint64_t frames = 0;
  for (std::uint64_t step = 1; step <= 1000; ++step) {
    frames += clock.advanceTo(step * 10'000'019);
  }
  EXPECT_NEAR(static_cast<double>(frames), 44100 * 10.000019, 1);
}

}  // namespace
}  // namespace audrel::linuxos
