#include "engine/UnderrunCounter.h"

#include <gtest/gtest.h>

#include <limits>

namespace audrel {
namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

TEST(UnderrunCounter, beginsAt0) {
  EXPECT_EQ(UnderrunCounter().value(), 0);
}

TEST(UnderrunCounter, countsUp) {
  UnderrunCounter counter;
  counter.increment();
  counter.increment();
  EXPECT_EQ(counter.value(), 2);
}

TEST(UnderrunCounter, isResetTo0) {
  UnderrunCounter counter(5);
  counter.reset();
  EXPECT_EQ(counter.value(), 0);
}

TEST(UnderrunCounter, countsUpToItsMaximum) {
  UnderrunCounter counter(most - 1);
  counter.increment();
  EXPECT_EQ(counter.value(), most);
}

TEST(UnderrunCounterDeathTest, endsTheProcessRatherThanWrap) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  UnderrunCounter counter(most);
  EXPECT_DEATH(counter.increment(), "");
}

}  // namespace
}  // namespace audrel
