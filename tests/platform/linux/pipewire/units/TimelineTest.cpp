#include "platform/linux/pipewire/Timeline.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <numeric>
#include <thread>
#include <vector>

namespace audrel::linuxos {
namespace {

constexpr std::uint64_t second = 1'000'000'000;

/// What an IO procedure was given. Plain fields on purpose: the timeline's promises alone keep its
/// threads apart.
struct Received {
  std::vector<float> left;
  std::vector<double> sampleTimes;

  static CA::OSStatus procedure(CA::AudioObjectID device, const CA::AudioTimeStamp*,
                                const CA::AudioBufferList* input,
                                const CA::AudioTimeStamp* inputTime, CA::AudioBufferList*,
                                const CA::AudioTimeStamp*, void* clientData) {
    EXPECT_EQ(device, 42U);
    EXPECT_EQ(input->mNumberBuffers, 1U);
    auto& received = *static_cast<Received*>(clientData);
    received.sampleTimes.push_back(inputTime->mSampleTime);
    const auto* samples = static_cast<const float*>(input->mBuffers[0].mData);
    for (std::uint32_t i = 0; i < input->mBuffers[0].mDataByteSize / sizeof(float); i += 2) {
      received.left.push_back(samples[i]);
    }
    return CA::kAudioHardwareNoError;
  }
};

struct TimelineTest : testing::Test {
  Received received;
  Timeline timeline{42, &Received::procedure, &received, 48000};

  /// Time begins, and the stream feeds from then on.
  void startStream(std::uint64_t now = 0) {
    timeline.start(now);
    timeline.feedFrom(Timeline::Feeder::stream);
  }

  void feed(std::uint64_t position, float value, std::uint32_t frames = 4) {
    const std::vector<float> plane(frames, value);
    feed(position, plane, frames);
  }

  void feed(std::uint64_t position, const std::vector<float>& plane, std::uint64_t duration) {
    TapAudio audio{.planes = {}, .frames = static_cast<std::uint32_t>(plane.size())};
    audio.planes[0] = plane.data();
    audio.planes[1] = plane.data();
    timeline.feedCycle({.clockId = 1,
                        .position = position,
                        .duration = duration,
                        .rate = 48000,
                        .nsec = position * second / 48000},
                       audio);
  }
};

TEST_F(TimelineTest, dropsWhatComesWhileNobodyMayFeed) {
  feed(0, 1);
  timeline.feedSilenceUntil(second);
  EXPECT_TRUE(received.left.empty());
}

TEST_F(TimelineTest, countsWhatADriverRanWithoutTheStreamAndPutsNothingInItsPlace) {
  const std::vector<float> plane(480, 1);
  TapAudio audio{.planes = {}, .frames = 480};
  audio.planes[0] = plane.data();
  audio.planes[1] = plane.data();
  GraphCycle cycle{.clockId = 1, .duration = 480, .rate = 48000, .nsec = second};
  startStream();
  timeline.feedCycle(cycle, audio);
  cycle = {.clockId = 2, .duration = 480, .rate = 48000, .nsec = second + second / 100};
  cycle.unheard = second / 100;
  timeline.feedCycle(cycle, audio);
  EXPECT_EQ(timeline.lostFrames(), 480U);
  EXPECT_EQ(received.left, std::vector<float>(960, 1));
}

TEST_F(TimelineTest, dropsSilenceWhileTheStreamFeedsAndCyclesWhileSilenceFeeds) {
  startStream();
  timeline.feedSilenceUntil(second);
  EXPECT_TRUE(received.left.empty());
  timeline.feedFrom(Timeline::Feeder::silence);
  feed(0, 1);
  EXPECT_TRUE(received.left.empty());
}

TEST_F(TimelineTest, deliversCyclesAsTheyCome) {
  startStream();
  feed(0, 1);
  feed(4, 2);
  EXPECT_EQ(received.left, (std::vector<float>{1, 1, 1, 1, 2, 2, 2, 2}));
  EXPECT_EQ(received.sampleTimes, (std::vector<double>{0, 4}));
  EXPECT_EQ(timeline.lostFrames(), 0U);
}

TEST_F(TimelineTest, deliversAllOfACycleThatIsLongerThanAnyGraphs) {
  startStream();
  std::vector<float> resampled(20'000);
  std::iota(resampled.begin(), resampled.end(), 0.0F);
  feed(0, resampled, 8192);
  EXPECT_EQ(received.left, resampled);
  EXPECT_EQ(timeline.lostFrames(), 0U);
}

TEST_F(TimelineTest, leavesOutTheCycleInWhichTimeStarted) {
  startStream(second / 48000);
  feed(0, 1);
  feed(4, 2);
  EXPECT_EQ(received.left, (std::vector<float>{2, 2, 2, 2}));
  EXPECT_EQ(timeline.lostFrames(), 0U);
}

TEST_F(TimelineTest, takesACycleWhoseClockIsFarBehindTime) {
  startStream(100 * second);
  feed(0, 1);
  EXPECT_EQ(received.left, (std::vector<float>{1, 1, 1, 1}));
}

TEST_F(TimelineTest, putsSilenceOfTheSameLengthWhereCyclesWereMissed) {
  startStream();
  feed(0, 1);
  feed(10, 2);
  feed(14, 3);
  EXPECT_EQ(received.left,
            (std::vector<float>{1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 2, 2, 2, 2, 3, 3, 3, 3}));
  EXPECT_EQ(received.sampleTimes, (std::vector<double>{0, 4, 10, 14}));
  EXPECT_EQ(timeline.lostFrames(), 6U);
}

TEST_F(TimelineTest, takesWhatComesForACycleAgainForWhatWasReadTooEarlyAfterAMissedOne) {
  startStream();
  feed(0, 1);
  feed(8, 2);
  feed(8, 3);
  feed(12, 4);
  EXPECT_EQ(received.left, (std::vector<float>{1, 1, 1, 1, 0, 0, 0, 0, 3, 3, 3, 3, 4, 4, 4, 4}));
  EXPECT_EQ(timeline.lostFrames(), 4U);
}

TEST_F(TimelineTest, takesNoCycleTwiceAndCountsWhatMayHaveBeenReadTooEarly) {
  startStream();
  feed(0, 1);
  feed(4, 2);
  feed(4, 3);
  feed(8, 4);
  EXPECT_EQ(received.left, (std::vector<float>{1, 1, 1, 1, 2, 2, 2, 2, 4, 4, 4, 4}));
  EXPECT_EQ(timeline.lostFrames(), 4U);
}

TEST_F(TimelineTest, keepsTheCycleAfterAMissedOneWhenNoOtherComes) {
  const std::vector<float> expected = {1, 1, 1, 1, 0, 0, 0, 0, 2, 2, 2, 2};
  startStream();
  feed(0, 1);
  feed(8, 2);
  timeline.feedFrom(Timeline::Feeder::silence);
  timeline.feedSilenceUntil(12 * second / 48000);
  EXPECT_EQ(received.left, expected);
  received.left.clear();
  startStream();
  feed(0, 1);
  feed(8, 2);
  timeline.finish(12 * second / 48000);
  EXPECT_EQ(received.left, expected);
}

TEST_F(TimelineTest, silenceIsCountedAsLostAndGoesOnWhereTheStreamEnded) {
  startStream();
  feed(0, 1, 4800);
  timeline.feedFrom(Timeline::Feeder::silence);
  timeline.feedSilenceUntil(second / 5);
  EXPECT_EQ(received.left.size(), 9600U);
  EXPECT_EQ(timeline.lostFrames(), 4800U);
}

TEST_F(TimelineTest, noCallBringsMoreThanTenSecondsOfSilence) {
  timeline.start(0);
  timeline.feedFrom(Timeline::Feeder::silence);
  timeline.feedSilenceUntil(3600 * second);
  EXPECT_EQ(received.left.size(), 480'000U);
  received.left.clear();
  timeline.finish(3600 * second);
  EXPECT_EQ(received.left.size(), 480'000U);
  received.left.clear();
  startStream();
  feed(0, 1);
  received.left.clear();
  feed(std::uint64_t{3600} * 48000, 1);
  EXPECT_EQ(received.left, std::vector<float>(480'000, 0.0F)) << "the cycle waits for its time";
}

TEST_F(TimelineTest, theEndFillsWhatAStreamThatStoppedComingLeft) {
  startStream();
  feed(0, 1, 4800);
  timeline.finish(second);
  EXPECT_EQ(received.left.size(), 48000U);
  EXPECT_EQ(timeline.lostFrames(), 43200U);
  feed(48000, 1, 4800);
  timeline.feedSilenceUntil(2 * second);
  EXPECT_EQ(received.left.size(), 48000U) << "nobody feeds after the end";
}

TEST_F(TimelineTest, tellsOfEveryCycleWhoeverFeeds) {
  feed(0, 1, 4800);
  timeline.feedFrom(Timeline::Feeder::silence);
  feed(4800, 1, 2400);
  EXPECT_EQ(timeline.cyclesHeard(), 2U);
  EXPECT_EQ(timeline.cycleLength(), std::chrono::milliseconds(50));
  EXPECT_FALSE(timeline.isFed());
}

TEST_F(TimelineTest, afterTheFeederChangedTheOldOneIsNotInside) {
  timeline.start(0);
  std::atomic<bool> isOver = false;
  std::thread stream([&] {
    for (std::uint64_t position = 0; !isOver; position += 4) {
      feed(position, 1);
    }
  });
  for (int round = 0; round < 200; ++round) {
    timeline.feedFrom(Timeline::Feeder::stream);
    std::this_thread::yield();
    timeline.feedFrom(Timeline::Feeder::nobody);
    received.left.clear();  // A race here is what the thread sanitizer looks for.
    received.sampleTimes.clear();
    std::this_thread::yield();
    EXPECT_TRUE(received.left.empty());
  }
  isOver = true;
  stream.join();
}

}  // namespace
}  // namespace audrel::linuxos
