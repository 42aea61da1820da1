#include "cli/Numbers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <utility>

namespace audrel::cli {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(ParseDuration, takesSecondsColonsAndUnitsLargestFirst) {
  const std::pair<const char*, int> lengths[] = {
      {"90", 90},       {"1", 1},        {"007", 7},        {"1:30", 90},
      {"0:05", 5},      {"90:00", 5400}, {"1:02:03", 3723}, {"100:00:00", 360000},
      {"1h2m", 3720},   {"90s", 90},     {"2m", 120},       {"1h30s", 3630},
      {"1h2m3s", 3723}, {"90m", 5400},
  };
  for (const auto& [text, length] : lengths) {
    EXPECT_EQ(parseDuration(text), seconds(length)) << text;
  }
}

TEST(ParseDuration, takesDecimalsOfTheLastNumber) {
  EXPECT_EQ(parseDuration("0.5"), milliseconds(500));
  EXPECT_EQ(parseDuration("1.5s"), milliseconds(1500));
  EXPECT_EQ(parseDuration("1.5h"), seconds(5400));
  EXPECT_EQ(parseDuration("1m0.25s"), milliseconds(60'250));
  EXPECT_EQ(parseDuration("1:30.25"), milliseconds(90'250));
  EXPECT_EQ(parseDuration("0.000001"), microseconds(1));
  EXPECT_EQ(parseDuration("31622400.0"), seconds(31622400));
}

TEST(ParseDuration, refusesOtherDecimals) {
  for (const char* text : {"1.", ".5", "1.5.5", "1,5", "1.5m3s", "1.5:30", "1:.5", "0.0000001",
                           "0.0", "0.0s", "1.s", "1.-5", "31622400.1", "1.5 s", "0.5e1"}) {
    EXPECT_EQ(parseDuration(text), std::nullopt) << '"' << text << '"';
  }
}

TEST(ParseDuration, refusesEverythingElse) {
  for (const char* text :
       {"",        " 90",  "90 ",  "-1",  "+1", "1:", ":30", "1:60", "1:02:60", "1:60:00", "1:002",
        "1:2:3:4", "1m1h", "1m2m", "1h2", "h",  "1x", "s1",  "1hs",  "0x10",    "1:3s",    "1e3"}) {
    EXPECT_EQ(parseDuration(text), std::nullopt) << '"' << text << '"';
  }
}

TEST(ParseDuration, refusesZeroAndMoreThanAYear) {
  for (const char* text : {"0", "0:00", "0h0m0s", "31622401", "9999999999999999999", "8785h",
                           "31622400:00:00", "9223372036854775807h"}) {
    EXPECT_EQ(parseDuration(text), std::nullopt) << '"' << text << '"';
  }
  EXPECT_EQ(parseDuration("31622400"), seconds(31622400));
  EXPECT_EQ(parseDuration("8784h"), seconds(31622400));
}

TEST(FormatDuration, hasHoursOnlyWhenThereAreAny) {
  EXPECT_EQ(formatDuration(seconds(0)), "0:00");
  EXPECT_EQ(formatDuration(seconds(5)), "0:05");
  EXPECT_EQ(formatDuration(seconds(754)), "12:34");
  EXPECT_EQ(formatDuration(seconds(3599)), "59:59");
  EXPECT_EQ(formatDuration(seconds(3600)), "1:00:00");
  EXPECT_EQ(formatDuration(seconds(3723)), "1:02:03");
  EXPECT_EQ(formatDuration(seconds(-3)), "0:00");
}

}  // namespace
}  // namespace audrel::cli
