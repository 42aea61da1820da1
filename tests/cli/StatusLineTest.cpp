#include "cli/StatusLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace audrel::cli {
namespace {

using std::chrono::seconds;
using testing::EndsWith;
using testing::StartsWith;

const RecordingStatus halfMinute = {.elapsed = seconds(35), .peak = 0.25F, .fileSize = 1'234'567};

TEST(StatusLine, hasTimeBarLevelAndSize) {
  EXPECT_EQ(statusLine(halfMinute, 79),
            "0:35  [################################........]   -12.0 dBFS    1.2 MB");
}

TEST(StatusLine, hasTheTotalWhereThereIsOne) {
  auto status = halfMinute;
  status.total = seconds(90);
  EXPECT_EQ(statusLine(status, 79),
            "0:35 / 1:30  [################################........]   -12.0 dBFS    1.2 MB");
  EXPECT_EQ(statusLine(status, 11), "0:35 / 1:30");
}

TEST(StatusLine, shortensTheBarFirst) {
  EXPECT_EQ(statusLine(halfMinute, 50), "0:35  [###############....]   -12.0 dBFS    1.2 MB");
}

TEST(StatusLine, hasANoticeBehindTheTime) {
  auto status = halfMinute;
  status.notice = "WRITING FAILS";
  EXPECT_EQ(statusLine(status, 79),
            "0:35  WRITING FAILS  [##########################.......]   -12.0 dBFS    1.2 MB");
  EXPECT_EQ(statusLine(status, 45), "0:35  WRITING FAILS   -12.0 dBFS    1.2 MB");
  EXPECT_EQ(statusLine(status, 33), "0:35  WRITING FAILS   -12.0 dBFS");
  EXPECT_EQ(statusLine(status, 19), "0:35  WRITING FAILS");
  EXPECT_EQ(statusLine(status, 18), "0:35");
}

TEST(StatusLine, dropsBarThenSizeThenLevelThenTime) {
  EXPECT_EQ(statusLine(halfMinute, 40), "0:35   -12.0 dBFS    1.2 MB");
  EXPECT_EQ(statusLine(halfMinute, 20), "0:35   -12.0 dBFS");
  EXPECT_EQ(statusLine(halfMinute, 10), "0:35");
  EXPECT_EQ(statusLine(halfMinute, 4), "0:35");
  EXPECT_EQ(statusLine(halfMinute, 3), "");
  EXPECT_EQ(statusLine(halfMinute, 0), "");
  EXPECT_EQ(statusLine(halfMinute, -1), "");
}

TEST(StatusLine, fitsEveryWindow) {
  const RecordingStatus longest = {
      .elapsed = seconds(359'999), .peak = 1e-6F, .fileSize = 99'999'900'000'000};
  for (int width = 0; width < 300; ++width) {
    EXPECT_LE(statusLine(longest, width).size(), static_cast<std::size_t>(width));
    EXPECT_LE(statusLine(halfMinute, width).size(), static_cast<std::size_t>(width));
  }
}

TEST(StatusLine, barIsEmptyForSilenceAndFullAtFullScale) {
  const auto filled = [](std::optional<float> peak) {
    const auto line = statusLine({.elapsed = seconds(1), .peak = peak, .fileSize = 0}, 79);
    return std::ranges::count(line, '#');
  };
  EXPECT_EQ(filled(std::nullopt), 0);
  EXPECT_EQ(filled(0.0F), 0);
  EXPECT_EQ(filled(0.00108F), 0);  // a little below the middle of the first sign
  EXPECT_EQ(filled(0.0011F), 1);
  EXPECT_EQ(filled(0.0316228F), 20);  // -30 dBFS of 60
  EXPECT_EQ(filled(1.0F), 40);
  EXPECT_EQ(filled(2.0F), 40);
}

TEST(StatusLine, hasNoLevelWhileNothingComes) {
  EXPECT_EQ(statusLine({.elapsed = seconds(1), .peak = std::nullopt, .fileSize = 44}, 40),
            "0:01                   44 B");
}

TEST(StatusLine, saysSilenceInsteadOfALevelThatThereIsNot) {
  EXPECT_THAT(statusLine({.elapsed = seconds(1), .peak = 0.0F, .fileSize = 44}, 40),
              StartsWith("0:01      silence"));
  EXPECT_THAT(statusLine({.elapsed = seconds(1), .peak = 2.0F, .fileSize = 44}, 40),
              EndsWith("6.0 dBFS      44 B"));
}

}  // namespace
}  // namespace audrel::cli
