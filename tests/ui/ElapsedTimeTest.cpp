#include <gtest/gtest.h>

#include <csignal>
#include <limits>

#include "tests/fakes/ScopedCommaLocale.h"
#include "ui/StatusItemController.h"

namespace audrel {
namespace {

constexpr auto text = StatusItemController::formatElapsed;

constexpr double limit = 9223372036854775808.0;
constexpr double justBelowTheLimit = 9223372036854774784.0;
constexpr double justBelowTheNegativeLimit = -9223372036854777856.0;

TEST(ElapsedTime, isMinutesAndSecondsBelowAnHourTruncatedNotRounded) {
  EXPECT_EQ(text(0), "00:00");
  EXPECT_EQ(text(59.9), "00:59");
  EXPECT_EQ(text(307), "05:07");
  EXPECT_EQ(text(3599.99), "59:59");
  EXPECT_EQ(text(-0.9), "00:00");
}

TEST(ElapsedTime, hasHoursFromAnHourOnThatAreNotPaddedAndNeverEnd) {
  EXPECT_EQ(text(3600), "1:00:00");
  EXPECT_EQ(text(43389), "12:03:09");
  EXPECT_EQ(text(36000), "10:00:00");
  EXPECT_EQ(text(justBelowTheLimit), "2562047788015215:13:04");
}

TEST(ElapsedTime, negativeIsFormattedWithTheSignInTheFieldsMinus5Is00Minus5) {
  EXPECT_EQ(text(-5), "00:-5");
  EXPECT_EQ(text(-59.9), "00:-59");
  EXPECT_EQ(text(-65), "-1:-5");
  EXPECT_EQ(text(-754), "-12:-34");
}

TEST(ElapsedTime, negativeHoursAreDropped) {
  EXPECT_EQ(text(-3600), "00:00");
  EXPECT_EQ(text(-3661), "-1:-1");
  EXPECT_EQ(text(-limit), "-30:-8");
}

TEST(ElapsedTime, isTheSameForEveryUser) {
  const fakes::ScopedCommaLocale locale;
  EXPECT_EQ(text(3600000.5), "1000:00:00");
}

class ElapsedTimeDeathTest : public testing::TestWithParam<double> {};

TEST_P(ElapsedTimeDeathTest, thatNoIntegerHoldsEndsTheProcess) {
  EXPECT_EXIT(text(GetParam()), testing::KilledBySignal(SIGABRT), "");
}

INSTANTIATE_TEST_SUITE_P(ElapsedTime, ElapsedTimeDeathTest,
                         testing::Values(std::numeric_limits<double>::quiet_NaN(),
                                         std::numeric_limits<double>::infinity(),
                                         -std::numeric_limits<double>::infinity(), limit,
                                         justBelowTheNegativeLimit,
                                         std::numeric_limits<double>::max()));

}  // namespace
}  // namespace audrel
