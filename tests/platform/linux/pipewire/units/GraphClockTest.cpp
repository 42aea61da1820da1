#include "platform/linux/pipewire/GraphClock.h"

#include <gtest/gtest.h>

namespace audrel::linuxos {
namespace {

constexpr std::uint64_t second = 1'000'000'000;
constexpr std::uint64_t quantumNanoseconds = 1024 * second / 48000;

/// The n-th cycle of a driver that started at one second.
GraphCycle cycle(std::uint64_t n, std::uint32_t clockId = 1) {
  return {.clockId = clockId,
          .position = n * 1024,
          .duration = 1024,
          .rate = 48000,
          .nsec = second + n * quantumNanoseconds};
}

TEST(GraphClock, theFirstCycleMissesNothing) {
  GraphClock clock(48000);
  clock.start(0);
  EXPECT_EQ(clock.advance(cycle(7)), 0U);
}

TEST(GraphClock, consecutiveCyclesMissNothing) {
  GraphClock clock(48000);
  clock.start(0);
  for (std::uint64_t n = 0; n < 100; ++n) {
    EXPECT_EQ(clock.advance(cycle(n)), 0U);
  }
}

TEST(GraphClock, aJumpOfThePositionIsExactlyWhatWasMissed) {
  GraphClock clock(48000);
  clock.start(0);
  clock.advance(cycle(0));
  EXPECT_EQ(clock.advance(cycle(4)), 3U * 1024);
  EXPECT_EQ(clock.advance(cycle(5)), 0U);
}

TEST(GraphClock, missedFramesAreCountedAtTheRateOfTheRecording) {
  GraphClock clock(96000);
  clock.start(0);
  clock.advance(cycle(0));
  EXPECT_EQ(clock.advance(cycle(2)), 2U * 1024);
}

TEST(GraphClock, aQuantumThatChangesMissesNothing) {
  GraphClock clock(48000);
  clock.start(0);
  clock.advance(cycle(0));
  GraphCycle half = cycle(1);
  half.duration = 512;
  EXPECT_EQ(clock.advance(half), 0U);
  GraphCycle next = half;
  next.position += 512;
  EXPECT_EQ(clock.advance(next), 0U);
}

TEST(GraphClock, anotherDriverThatFollowsWithinTwoCyclesMissesNothing) {
  GraphClock clock(48000);
  clock.start(0);
  clock.advance(cycle(10, 1));
  GraphCycle other = cycle(0, 2);
  other.nsec = cycle(11, 1).nsec + quantumNanoseconds + quantumNanoseconds / 2;
  EXPECT_EQ(clock.advance(other), 0U);
}

TEST(GraphClock, anotherDriverThatComesLateIsMeasuredByTheMonotonicClock) {
  GraphClock clock(48000);
  clock.start(0);
  clock.advance(cycle(10, 1));
  GraphCycle other = cycle(0, 2);
  other.nsec = cycle(11, 1).nsec + second / 2;
  EXPECT_EQ(clock.advance(other), 24000U);
}

TEST(GraphClock, aDriverThatCountsAnewIsAnotherOne) {
  GraphClock clock(48000);
  clock.start(0);
  clock.advance(cycle(10));
  GraphCycle anew = cycle(0);
  anew.nsec = cycle(11).nsec;
  EXPECT_EQ(clock.advance(anew), 0U);
}

TEST(GraphClock, aRateThatChangesIsAnotherDriver) {
  GraphClock clock(48000);
  clock.start(0);
  clock.advance(cycle(10));
  GraphCycle slower = cycle(11);
  slower.rate = 44100;
  slower.position = 1'000'000;
  EXPECT_EQ(clock.advance(slower), 0U);
}

TEST(GraphClock, silenceGoesFromTheStartToTheGivenTime) {
  GraphClock clock(48000);
  clock.start(second);
  EXPECT_EQ(clock.advanceTo(second + second / 4), 12000U);
  EXPECT_EQ(clock.advanceTo(second + second / 2), 12000U);
  EXPECT_EQ(clock.advanceTo(second), 0U) << "time does not go back";
}

TEST(GraphClock, silenceGoesOnWhereTheLastCycleEnded) {
  GraphClock clock(48000);
  clock.start(0);
  clock.advance(cycle(0));
  EXPECT_EQ(clock.advanceTo(cycle(1).nsec + second), 48000U);
}

TEST(GraphClock, theFirstCycleAfterSilenceMissesWhatSilenceLeft) {
  GraphClock clock(48000);
  clock.start(0);
  clock.advance(cycle(0));
  clock.advanceTo(cycle(1).nsec);
  GraphCycle found = cycle(0, 3);
  found.nsec = cycle(1).nsec + second / 100;
  EXPECT_EQ(clock.advance(found), 480U);
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
