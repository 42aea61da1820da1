// On a busy machine cycles are lost for real, here and in the player: a recording is exact, or
// every gap in it is a reported one.

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/RealTime.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/pipewire/harness/Track.h"

namespace audrel::pwtest {
namespace {

using namespace std::chrono_literals;

/// Frames of the graph in which the player knows that it did not play.
std::uint64_t pausedFor(const std::vector<Stretch>& stretches) {
  std::uint64_t frames = 0;
  for (std::size_t i = 1; i < stretches.size(); ++i) {
    const std::uint64_t between = stretches[i].graphPosition - stretches[i - 1].graphPosition;
    const std::uint64_t played = stretches[i].frame - stretches[i - 1].frame;
    frames += between > played ? between - played : 0;
  }
  return frames;
}

TEST_F(RealTime, twentySecondsAreExactOrEveryGapWasReported) {
  start([this] { return recorder.startProcess(process); });
  std::this_thread::sleep_for(20s);
  const Audio audio = stop();
  const auto stretches = player.report("music").stretches;

  std::string problem;
  if (recorder.lostFrames() == 0) {
    const auto track = onlyTrack(audio, stretches, &problem);
    ASSERT_TRUE(track) << problem;
    EXPECT_TRUE(isExactButFor(*track, 0)) << problem;
  }
  const auto delivery = deliveryOf(audio, &problem);
  ASSERT_TRUE(delivery) << problem;
  // Who is late for several cycles in a row may read one whose buffer is being written again, which
  // no client can see.
  EXPECT_LE(delivery->torn, recorder.lostFrames()) << problem;
  EXPECT_LE(delivery->missing, recorder.lostFrames() + delivery->torn) << problem;
  EXPECT_GE(delivery->begin + delivery->silent, recorder.lostFrames()) << problem;
  EXPECT_LE(delivery->silent, recorder.lostFrames() + pausedFor(stretches)) << problem;
  RecordProperty("lostFrames", static_cast<int>(recorder.lostFrames()));
}

}  // namespace
}  // namespace audrel::pwtest
