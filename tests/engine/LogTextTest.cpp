#include "engine/LogText.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <limits>
#include <string>

#include "tests/fakes/ScopedCommaLocale.h"

namespace audrel {
namespace {

/// What printf makes of it, in the C locale in which the tests run.
std::string printed(double number, int decimals) {
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
  return text.data();
}

TEST(FixedNotation, isWhatPrintfMakesOfIt) {
  for (const double number :
       {0.0, -0.0, 0.05, 0.15, 0.25, 0.35, 1.949, 1.95, -90.0, 44100.0, 48000.0, 3599.96, 1234567.8,
        1e-9, 1e22, std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest(),
        std::numeric_limits<double>::denorm_min()}) {
    EXPECT_EQ(fixedNotation(number, 6), printed(number, 6));
    EXPECT_EQ(fixedNotation(number, 1), printed(number, 1));
  }
}

TEST(FixedNotation, hasAPointAndNoGroupsWhateverTheLocale) {
  const fakes::ScopedCommaLocale locale;
  EXPECT_EQ(fixedNotation(1234567.5, 1), "1234567.5");
  EXPECT_EQ(fixedNotation(48000, 6), "48000.000000");
}

TEST(Describe, writesNumbersInFullAndWithADecimal) {
  EXPECT_EQ(describe({{"a", 48000.0}, {"b", 22050.5}, {"c", 100000.0}, {"d", 0.0}}),
            "[\"a\": 48000.0, \"b\": 22050.5, \"c\": 100000.0, \"d\": 0.0]");
}

TEST(Describe, writesIntegersAndBooleans) {
  EXPECT_EQ(
      describe(
          {{"a", std::uint32_t{4294967295}}, {"b", std::int64_t{-1}}, {"c", true}, {"d", false}}),
      "[\"a\": 4294967295, \"b\": -1, \"c\": true, \"d\": false]");
}

TEST(Describe, ofNothingIsAPairOfBrackets) {
  EXPECT_EQ(describe({}), "[]");
}

TEST(Describe, followsNoLocale) {
  const fakes::ScopedCommaLocale locale;
  EXPECT_EQ(describe({{"a", 1234567.5}, {"b", std::int64_t{1234567}}}),
            "[\"a\": 1234567.5, \"b\": 1234567]");
}

}  // namespace
}  // namespace audrel
