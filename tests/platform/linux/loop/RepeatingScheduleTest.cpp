#include "platform/linux/loop/RepeatingSchedule.h"

#include <gtest/gtest.h>

#include <limits>

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;

TEST(RepeatingSchedule, firesFirstAWholeIntervalAfterItsStart) {
  const RepeatingSchedule schedule(7s, 1.0);
  EXPECT_EQ(schedule.nextAfter(7s), microseconds(8s));
}

TEST(RepeatingSchedule, staysOnItsGridHoweverLateEachFiringWas) {
  const RepeatingSchedule schedule(0s, 1.0);
  microseconds time = 0s;
  for (int firing = 1; firing <= 100'000; ++firing) {
    time = schedule.nextAfter(time + 700ms);
    ASSERT_EQ(time, microseconds(firing * 1s));
  }
}

TEST(RepeatingSchedule, leavesOutWhatWasMissed) {
  const RepeatingSchedule schedule(0s, 0.25);
  EXPECT_EQ(schedule.nextAfter(10s + 1us), microseconds(10s + 250ms));
}

TEST(RepeatingSchedule, aFiringTimeItselfIsPast) {
  const RepeatingSchedule schedule(0s, 0.5);
  EXPECT_EQ(schedule.nextAfter(500ms), microseconds(1s));
}

TEST(RepeatingSchedule, anIntervalThatIsNotAboveZeroIsATenthOfAMillisecond) {
  for (const double interval : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), 1e-9}) {
    EXPECT_EQ(RepeatingSchedule(0s, interval).nextAfter(0s), 100us);
  }
}

TEST(RepeatingSchedule, anEndlessIntervalOverflowsNothing) {
  const RepeatingSchedule schedule(1h, std::numeric_limits<double>::infinity());
  EXPECT_GT(schedule.nextAfter(1h), microseconds(24h * 365 * 99));
}

}  // namespace
}  // namespace audrel::linuxos
