// The means of the other tests, which must be right before they mean anything.

#include <gtest/gtest.h>

#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/Stamp.h"

namespace audrel::pwtest {
namespace {

void append(Audio& audio, StampPosition first, std::size_t frames) {
  for (std::size_t i = 0; i < frames; ++i) {
    const StampedFrame frame = stamp({first.stream, first.position + i});
    audio.push_back(asFloat(frame.left));
    audio.push_back(asFloat(frame.right));
  }
}

TEST(Stamp, aFrameTellsItsStreamAndPosition) {
  for (std::uint32_t stream = 0; stream < stampStreams; ++stream) {
    for (std::uint64_t position = 0; position < stampFrames; position += 10'007) {
      EXPECT_EQ(unstamp(stamp({stream, position})), (StampPosition{stream, position}));
    }
  }
}

TEST(Segments, aBreakASilenceAndAForeignFrameAreFound) {
  Audio audio;
  append(audio, {.stream = 3, .position = 100}, 500);
  append(audio, {.stream = 3, .position = 601}, 200);
  audio.insert(audio.end(), 2 * 64, 0.0F);
  append(audio, {.stream = 4, .position = 0}, 10);
  audio.push_back(0.1F);
  audio.push_back(0.1F);
  using enum Segment::Kind;
  const std::vector<Segment> expected = {
      {.kind = stamped, .begin = 0, .length = 500, .first = {3, 100}},
      {.kind = stamped, .begin = 500, .length = 200, .first = {3, 601}},
      {.kind = silence, .begin = 700, .length = 64, .first = {}},
      {.kind = stamped, .begin = 764, .length = 10, .first = {4, 0}},
      {.kind = foreign, .begin = 774, .length = 1, .first = {}}};
  EXPECT_EQ(segmentsOf(audio), expected);
}

TEST(Segments, aChangedSampleEndsASegment) {
  Audio audio;
  append(audio, {.stream = 1, .position = 0}, 100);
  audio[2 * 50] += 1.0F / 32768;
  const auto segments = segmentsOf(audio);
  ASSERT_GE(segments.size(), 3U);
  EXPECT_EQ(segments.front().length, 50U);
  EXPECT_TRUE(hasKind(segments, Segment::Kind::foreign));
}

TEST(Segments, aStreamCanBeTakenOutOfASum) {
  Audio one;
  Audio other;
  append(one, {.stream = 1, .position = 7}, 100);
  append(other, {.stream = 2, .position = 1000}, 100);
  Audio sum = one;
  for (std::size_t i = 0; i < sum.size(); ++i) {
    sum[i] += other[i];
  }
  subtractStream(sum, 0, {.stream = 1, .position = 7});
  EXPECT_EQ(segmentsOf(sum), segmentsOf(other));
}

}  // namespace
}  // namespace audrel::pwtest
