#include "model/FilenameFormatter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <type_traits>
#include <utility>

#include "tests/fakes/ScopedCommaLocale.h"
#include "tests/fakes/ScopedVariable.h"

namespace audrel {
namespace {

using namespace std::chrono_literals;

static_assert(!std::is_default_constructible_v<FilenameFormatter>, "a namespace has no instances");

NS::Date utc(int year, unsigned month, unsigned day, std::chrono::milliseconds time) {
  return std::chrono::sys_days(std::chrono::year(year) / static_cast<int>(month) /
                               static_cast<int>(day)) +
         time;
}

TEST(Sanitize, spacesBecomeHyphensAndOtherCharactersVanish) {
  const std::pair<std::string, std::string> names[] = {
      {"My App (Beta) 2.0", "My-App-Beta-20"},
      {"", ""},
      {" -a- ", "--a--"},
      {"a\tb\nc\u00a0d\u3000e", "abcde"},  // no spaces
      {"Café Ünïx", "Caf-nx"},
      {"Cafe\u0301", "Cafe"},  // with a combining accent
      {"Музыка", ""},
      {"🎧🎵", ""},
      {"a\xFF\xC3(b\xE2\x82", "ab"},  // no UTF-8
      {"a\xC3", "a"},
      {"../../etc/passwd", "etcpasswd"},
      {std::string(5000, 'x'), std::string(5000, 'x')},
  };
  for (const auto& [name, sanitized] : names) {
    EXPECT_EQ(FilenameFormatter::sanitize(name), sanitized);
  }
}

TEST(Sanitize, theAllowedCharactersAllStay) {
  const std::string allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-";
  EXPECT_EQ(FilenameFormatter::sanitize(allowed), allowed);
}

TEST(Sanitize, ofEveryOtherByteNothingStays) {
  std::string others;
  for (int byte = 0; byte < 256; ++byte) {
    const auto letter = static_cast<char>(byte);
    const bool allowed = (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
                         (letter >= 'a' && letter <= 'z') || letter == '-' || letter == ' ';
    if (!allowed) {
      others += letter;
    }
  }
  ASSERT_EQ(others.size(), 256U - 10 - 26 - 26 - 2);
  EXPECT_EQ(FilenameFormatter::sanitize(others), "");
}

TEST(Sanitize, twoSpacesInARowGiveTwoHyphens) {
  EXPECT_EQ(FilenameFormatter::sanitize("a  b"), "a--b");
}

TEST(TimestampString, isYearMonthDayThenTheTimeOf24HoursWithoutSeparatorsAllPadded) {
  const fakes::ScopedVariable zone("TZ", "UTC");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h + 9min)), "2026-11-16-070900");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2027, 1, 2, 3h + 4min + 5s)),
            "2027-01-02-030405");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 23h + 59min + 59s)),
            "2026-11-16-235959");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 0h)), "2026-11-16-000000");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 12h)), "2026-11-16-120000");
}

TEST(TimestampString, fractionsOfASecondAreCutOff) {
  const fakes::ScopedVariable zone("TZ", "UTC");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h + 999ms)), "2026-11-16-070000");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(1969, 12, 31, 24h - 1ms)), "1969-12-31-235959");
}

TEST(TimestampString, isLocalTime) {
  const fakes::ScopedVariable zone("TZ", "NPT-05:45");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 12, 31, 20h)), "2027-01-01-014500");
}

TEST(TimestampString, followsSummerTime) {
  const fakes::ScopedVariable zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 7, 1, 12h)), "2026-07-01-140000");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 12, 1, 12h)), "2026-12-01-130000");
}

TEST(TimestampString, followsAZoneThatChangesWhileTheProgramRuns) {
  const fakes::ScopedVariable first("TZ", "ONE-1");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h)), "2026-11-16-080000");
  const fakes::ScopedVariable second("TZ", "TWO-2");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h)), "2026-11-16-090000");
}

TEST(TimestampString, hasLatinDigitsWithoutGroupingWhateverTheLocale) {
  const fakes::ScopedVariable zone("TZ", "UTC");
  const fakes::ScopedCommaLocale locale;
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h + 9min)), "2026-11-16-070900");
}

}  // namespace
}  // namespace audrel
