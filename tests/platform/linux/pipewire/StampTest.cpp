// The means of the other tests, which must be right before they mean anything.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/Stamp.h"
#include "tests/platform/linux/pipewire/harness/Track.h"

namespace audrel::pwtest {
namespace {

void append(Audio& audio, StampPosition first, std::size_t frames) {
  for (std::size_t i = 0; i < frames; ++i) {
    const StampedFrame frame = stamp({first.stream, first.position + i});
    audio.push_back(asFloat(frame.left));
    audio.push_back(asFloat(frame.right));
  }
}

void appendSilence(Audio& audio, std::size_t frames) {
  audio.insert(audio.end(), 2 * frames, 0.0F);
}

/// Changes one sample by the least that 16 bits can tell.
void spoil(Audio& audio, std::size_t frame) {
  audio[2 * frame] += 1.0F / 32768;
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
  appendSilence(audio, 64);
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
  spoil(audio, 50);
  const auto segments = segmentsOf(audio);
  ASSERT_GE(segments.size(), 3U);
  EXPECT_EQ(segments.front().length, 50U);
  EXPECT_TRUE(hasKind(segments, Segment::Kind::foreign));
}

Audio stamped(StampPosition first, std::size_t frames) {
  Audio audio;
  append(audio, first, frames);
  return audio;
}

TEST(Track, aStreamWithSilenceInTheRightPlaceIsOne) {
  Audio audio;
  appendSilence(audio, 10);
  append(audio, {.stream = 5, .position = 1000}, 100);
  appendSilence(audio, 30);
  append(audio, {.stream = 5, .position = 1130}, 100);
  std::string problem;
  const auto track = onlyTrack(audio, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_EQ(track->begin, 10U);
  EXPECT_EQ(track->end, 240U);
  EXPECT_EQ(track->silent, 30U);
  EXPECT_EQ(track->first, (StampPosition{5, 1000}));
}

TEST(Track, aFrameTooManyOrTooFewIsNone) {
  for (const std::uint64_t wrong : {1129U, 1131U, 1100U}) {
    Audio audio = stamped({.stream = 5, .position = 1000}, 100);
    appendSilence(audio, 30);
    append(audio, {.stream = 5, .position = wrong}, 100);
    std::string problem;
    EXPECT_FALSE(onlyTrack(audio, &problem)) << problem;
  }
}

TEST(Track, anotherStreamOrAForeignFrameIsNone) {
  Audio other = stamped({.stream = 5, .position = 0}, 100);
  append(other, {.stream = 6, .position = 100}, 100);
  Audio foreign = stamped({.stream = 5, .position = 0}, 100);
  spoil(foreign, 50);
  std::string problem;
  EXPECT_FALSE(onlyTrack(other, &problem));
  EXPECT_FALSE(onlyTrack(foreign, &problem));
}

TEST(Track, whatStandsWhenItWasPlayedIsExactThoughThePlayerPaused) {
  Audio audio = stamped({.stream = 5, .position = 1000}, 100);
  appendSilence(audio, 30);
  append(audio, {.stream = 5, .position = 1100}, 100);
  std::string problem;
  EXPECT_FALSE(onlyTrack(audio, {{.graphPosition = 0, .frame = 0}}, &problem));
  const std::vector<Stretch> paused = {{.graphPosition = 7000, .frame = 0},
                                       {.graphPosition = 8130, .frame = 1100}};
  const auto track = onlyTrack(audio, paused, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_EQ(track->silent, 30U);
  EXPECT_EQ(track->unplayed, 30U);
  EXPECT_TRUE(isExactButFor(*track, 0));
  EXPECT_TRUE(isExactButFor(*track, 30)) << "they may have been lost while nothing was played";
  EXPECT_FALSE(isExactButFor(*track, 31));
}

TEST(Track, aGapThatWasNotReportedIsNotExact) {
  EXPECT_TRUE(isExactButFor({.silent = 1024}, 1024));
  EXPECT_FALSE(isExactButFor({.silent = 1024}, 0));
  EXPECT_FALSE(isExactButFor({.silent = 0}, 1024));
}

TEST(Delivery, countsWhatIsMissingAndWhatIsSilent) {
  Audio audio = stamped({.stream = 5, .position = 1000}, 100);
  appendSilence(audio, 60);
  append(audio, {.stream = 5, .position = 1130}, 100);
  append(audio, {.stream = 5, .position = 1250}, 100);
  std::string problem;
  const auto delivery = deliveryOf(audio, &problem);
  ASSERT_TRUE(delivery) << problem;
  EXPECT_EQ(delivery->missing, 50U);
  EXPECT_EQ(delivery->silent, 60U);
  EXPECT_EQ(delivery->torn, 0U);
}

TEST(Delivery, countsWhatIsTornOnItsOwn) {
  Audio audio = stamped({.stream = 5, .position = 1000}, 200);
  for (std::size_t frame = 100; frame < 130; ++frame) {
    audio[2 * frame] = 0;
    audio[2 * frame + 1] = 0;
  }
  spoil(audio, 130);
  std::string problem;
  const auto delivery = deliveryOf(audio, &problem);
  ASSERT_TRUE(delivery) << problem;
  EXPECT_EQ(delivery->missing, 31U);
  EXPECT_EQ(delivery->silent, 30U);
  EXPECT_EQ(delivery->torn, 1U);
}

TEST(Delivery, isNoneOfFramesThatAreEarlyOrRepeatedOrNotTheStreams) {
  for (const StampPosition wrong : {StampPosition{5, 1131}, {5, 1099}, {6, 1130}}) {
    Audio audio = stamped({.stream = 5, .position = 1000}, 100);
    appendSilence(audio, 30);
    append(audio, wrong, 100);
    std::string problem;
    EXPECT_FALSE(deliveryOf(audio, &problem)) << problem;
  }
  std::string problem;
  EXPECT_FALSE(deliveryOf(Audio(200), &problem));
}

TEST(Track, oneThatIsTakenOutOfASumLeavesTheOther) {
  const Audio one = stamped({.stream = 1, .position = 7}, 100);
  const Audio other = stamped({.stream = 2, .position = 1000}, 100);
  Audio sum = one;
  for (std::size_t i = 0; i < sum.size(); ++i) {
    sum[i] += other[i];
  }
  remove({.begin = 0, .end = 100, .first = {1, 7}}, sum);
  EXPECT_EQ(sum, other);
}

TEST(Track, aStartOfOneChannelIsSilencedIfItIsTheStreamsOwn) {
  Audio audio = stamped({.stream = 1, .position = 0}, 100);
  for (std::size_t frame = 0; frame < 40; ++frame) {
    audio[2 * frame + 1] = 0;
  }
  Audio wrong = audio;
  spoil(wrong, 39);
  removeHalfLinkedStarts(audio);
  removeHalfLinkedStarts(wrong);
  std::string problem;
  const auto track = onlyTrack(audio, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_EQ(track->begin, 40U);
  EXPECT_FALSE(onlyTrack(wrong, &problem));
}

}  // namespace
}  // namespace audrel::pwtest
