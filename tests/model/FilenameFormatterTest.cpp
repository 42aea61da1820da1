#include "model/FilenameFormatter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <type_traits>

#include "tests/fakes/ScopedCommaLocale.h"
#include "tests/fakes/ScopedTimeZone.h"

namespace audrel {
namespace {

using namespace std::chrono_literals;
using fakes::ScopedTimeZone;

static_assert(!std::is_default_constructible_v<FilenameFormatter>, "a namespace has no instances");

NS::Date utc(int year, unsigned month, unsigned day, std::chrono::milliseconds time) {
  return std::chrono::sys_days(std::chrono::year(year) / static_cast<int>(month) /
                               static_cast<int>(day)) +
         time;
}

TEST(Sanitize, spacesBecomeHyphensAndOtherCharactersVanish) {
  EXPECT_EQ(FilenameFormatter::sanitize("My App (Beta) 2.0"), "My-App-Beta-20");
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

TEST(Sanitize, hyphensAtTheEndsAreNotTrimmed) {
  EXPECT_EQ(FilenameFormatter::sanitize(" -a- "), "--a--");
}

TEST(Sanitize, onlyTheSpaceCharacterIsASpace) {
  EXPECT_EQ(FilenameFormatter::sanitize("a\tb\nc\xC2\xA0"
                                        "d\xE3\x80\x80"
                                        "e"),
            "abcde");
}

TEST(Sanitize, accentedLettersAreRemovedNotReplaced) {
  EXPECT_EQ(FilenameFormatter::sanitize("Café Ünïx"), "Caf-nx");
}

TEST(Sanitize, aCombiningAccentLeavesItsLetter) {
  EXPECT_EQ(FilenameFormatter::sanitize("Cafe\xCC\x81"), "Cafe");
}

TEST(Sanitize, ofCyrillicAndEmojiNothingIsLeft) {
  EXPECT_EQ(FilenameFormatter::sanitize("Музыка"), "");
  EXPECT_EQ(FilenameFormatter::sanitize("🎧🎵"), "");
}

TEST(Sanitize, invalidUTF8IsDroppedAndItsNeighboursStay) {
  EXPECT_EQ(FilenameFormatter::sanitize("a\xFF\xC3(b\xE2\x82"), "ab");
  EXPECT_EQ(FilenameFormatter::sanitize("a\xC3"), "a");
}

TEST(Sanitize, aPathCannotBeSmuggledIn) {
  EXPECT_EQ(FilenameFormatter::sanitize("../../etc/passwd"), "etcpasswd");
}

TEST(Sanitize, anEmptyNameStaysEmpty) {
  EXPECT_EQ(FilenameFormatter::sanitize(""), "");
}

TEST(Sanitize, thereIsNoLengthLimit) {
  EXPECT_EQ(FilenameFormatter::sanitize(std::string(5000, 'x')).size(), 5000U);
}

TEST(TimestampString, isYearMonthDayThenTheTimeWithoutSeparators) {
  const ScopedTimeZone zone("UTC");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h + 9min)), "2026-11-16-070900");
}

TEST(TimestampString, everyFieldIsPaddedWithZeros) {
  const ScopedTimeZone zone("UTC");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2027, 1, 2, 3h + 4min + 5s)),
            "2027-01-02-030405");
}

TEST(TimestampString, theClockHas24Hours) {
  const ScopedTimeZone zone("UTC");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 23h + 59min + 59s)),
            "2026-11-16-235959");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 0h)), "2026-11-16-000000");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 12h)), "2026-11-16-120000");
}

TEST(TimestampString, fractionsOfASecondAreCutOff) {
  const ScopedTimeZone zone("UTC");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h + 999ms)), "2026-11-16-070000");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(1969, 12, 31, 24h - 1ms)), "1969-12-31-235959");
}

TEST(TimestampString, isLocalTime) {
  const ScopedTimeZone zone("NPT-05:45");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 12, 31, 20h)), "2027-01-01-014500");
}

TEST(TimestampString, followsSummerTime) {
  const ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 7, 1, 12h)), "2026-07-01-140000");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 12, 1, 12h)), "2026-12-01-130000");
}

TEST(TimestampString, followsAZoneThatChangesWhileTheProgramRuns) {
  const ScopedTimeZone first("ONE-1");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h)), "2026-11-16-080000");
  const ScopedTimeZone second("TWO-2");
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h)), "2026-11-16-090000");
}

TEST(TimestampString, hasLatinDigitsWithoutGroupingWhateverTheLocale) {
  const ScopedTimeZone zone("UTC");
  const fakes::ScopedCommaLocale locale;
  EXPECT_EQ(FilenameFormatter::timestampString(utc(2026, 11, 16, 7h + 9min)), "2026-11-16-070900");
}

}  // namespace
}  // namespace audrel
