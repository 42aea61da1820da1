#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "cli/Json.h"
#include "cli/Numbers.h"
#include "platform/Printable.h"
#include "tests/fakes/ScopedCommaLocale.h"

namespace audrel::cli {
namespace {

using std::operator""s;

TEST(Printable, leavesTextAlone) {
  EXPECT_EQ(printable(""), "");
  EXPECT_EQ(printable("Web Radio \"1\" \\ Télé 音楽 🎵"), "Web Radio \"1\" \\ Télé 音楽 🎵");
}

TEST(Printable, showsControlCharacters) {
  EXPECT_EQ(printable("a\x1b[2Jb\r\n\t\x7f"), "a\\x1b[2Jb\\x0d\\x0a\\x09\\x7f");
  EXPECT_EQ(printable("nul\0l"s), "nul\\x00l");
  EXPECT_EQ(printable("csi \u009b"), "csi \\x9b");
}

TEST(Printable, showsWhatTurnsTheDirectionOfWriting) {
  EXPECT_EQ(printable("a\u202egpj.exe"), "a\\u202egpj.exe");
  EXPECT_EQ(printable("\u2066\u2028\u200f"), "\\u2066\\u2028\\u200f");
}

TEST(Printable, showsBytesThatAreNoUtf8) {
  EXPECT_EQ(printable("\xff ok"), "\\xff ok");
  EXPECT_EQ(printable("cut \xe2\x82"), "cut \\xe2\\x82");
  EXPECT_EQ(printable("overlong \xc0\xaf"), "overlong \\xc0\\xaf");
  EXPECT_EQ(printable("overlong \xe0\x80\xaf"), "overlong \\xe0\\x80\\xaf");
  EXPECT_EQ(printable("surrogate \xed\xa0\x80"), "surrogate \\xed\\xa0\\x80");
  EXPECT_EQ(printable("too large \xf4\x90\x80\x80"), "too large \\xf4\\x90\\x80\\x80");
  EXPECT_EQ(printable("lone \x80"), "lone \\x80");
}

TEST(JsonString, escapesWhatJsonAsksForAndControlCharacters) {
  EXPECT_EQ(jsonString(std::string_view("a\"b\\c/é")), R"("a\"b\\c/é")");
  EXPECT_EQ(jsonString(std::string_view("\n\x1b\x7f\0"s)), R"("\u000a\u001b\u007f\u0000")");
  EXPECT_EQ(jsonString(std::string_view("\u0085")), R"("\u0085")");
}

TEST(JsonString, replacesBytesThatAreNoUtf8) {
  EXPECT_EQ(jsonString(std::string_view("a\xff"
                                        "b")),
            R"("a\ufffdb")");
}

TEST(JsonString, ofNothingIsNull) {
  EXPECT_EQ(jsonString(std::optional<std::string>()), "null");
  EXPECT_EQ(jsonString(std::optional<std::string>("x")), "\"x\"");
}

TEST(JsonNumber, isPlainWhateverTheLocale) {
  const fakes::ScopedCommaLocale commas;
  EXPECT_EQ(jsonNumber(10.5), "10.5");
  EXPECT_EQ(jsonNumber(1000000.0), "1000000");
  EXPECT_EQ(jsonNumber(0.0), "0");
  EXPECT_EQ(jsonNumber(-9.25), "-9.25");
}

TEST(JsonNumber, isNullForWhatJsonHasNoNumberFor) {
  EXPECT_EQ(jsonNumber(std::nullopt), "null");
  EXPECT_EQ(jsonNumber(std::numeric_limits<double>::infinity()), "null");
  EXPECT_EQ(jsonNumber(std::nan("")), "null");
}

TEST(JsonObject, isOneLine) {
  EXPECT_EQ(jsonObject({}), "{}");
  EXPECT_EQ(jsonObject({{"a", "1"}, {"b", "null"}}), R"({"a": 1, "b": null})");
}

TEST(WithDecimals, roundsAndHasNoNegativeZero) {
  const fakes::ScopedCommaLocale commas;
  EXPECT_EQ(withDecimals(12.345, 1), "12.3");
  EXPECT_EQ(withDecimals(-9.35, 2), "-9.35");
  EXPECT_EQ(withDecimals(-0.04, 1), "0.0");
  EXPECT_EQ(withDecimals(48000, 0), "48000");
}

TEST(FormatByteCount, hasPowersOfAThousand) {
  EXPECT_EQ(formatByteCount(0), "0 B");
  EXPECT_EQ(formatByteCount(999), "999 B");
  EXPECT_EQ(formatByteCount(1000), "1 kB");
  EXPECT_EQ(formatByteCount(340'200), "340 kB");
  EXPECT_EQ(formatByteCount(1'249'000), "1.2 MB");
  EXPECT_EQ(formatByteCount(4'300'000'000), "4.3 GB");
  EXPECT_EQ(formatByteCount(5'000'000'000'000'000), "5000.0 TB");
}

}  // namespace
}  // namespace audrel::cli
