// What only a server in real time can show.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/RealTime.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/pipewire/harness/Track.h"

namespace audrel::pwtest {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;

TEST_F(RealTime, aServerThatDiesAndComesBackLeavesSilenceOfTheRightLength) {
  start([this] { return recorder.startProcess(process); });
  std::this_thread::sleep_for(1s);
  server.crash();
  const Stopwatch outage;
  std::this_thread::sleep_for(1500ms);
  const double outageFrames = outage.frames();
  server.restart();
  ASSERT_TRUE(server.isRunning());
  ASSERT_TRUE(player.reconnect());
  ASSERT_TRUE(player.open("music", 2));
  ASSERT_TRUE(player.waitForMore("music", 48'000));
  Audio audio = stop();

  removeHalfLinkedStarts(audio);
  const auto segments = segmentsWithoutLead(audio);
  EXPECT_FALSE(hasKind(segments, Segment::Kind::foreign)) << describe(segments);
  EXPECT_EQ(segments.front().first.stream, 1U) << describe(segments);
  EXPECT_EQ(segments.back().first.stream, 2U) << describe(segments);
  EXPECT_GE(static_cast<double>(recorder.lostFrames()), outageFrames - 4096);
  EXPECT_THAT(recorder.log().lines(), Contains(HasSubstr("error: Audio server lost")));
  EXPECT_THAT(recorder.log().lines(), Contains(HasSubstr("info: Audio server found again")));
}

class TwoOutputs : public RealTime {
 protected:
  TwoOutputs() : RealTime({{"speakers"}, {"headphones"}}) {}
};

TEST_F(TwoOutputs, changesOfTheDefaultAndItsDriverLoseNothing) {
  start([this] { return recorder.startEverything(); });
  for (const char* sink : {"headphones", "speakers"}) {
    ASSERT_TRUE(recorder.waitForMore(24'000));
    server.session().setDefaultSink(sink);
  }
  ASSERT_TRUE(recorder.waitForMore(24'000));
  // The first cycle of another driver follows the last one's at once: what the application plays
  // next comes sooner, by up to two cycles.
  Audio audio = stop(2 * 2048);

  removeHalfLinkedStarts(audio);
  const auto segments = segmentsWithoutLead(audio);
  std::uint64_t next = segments.front().first.position;
  std::uint64_t silent = 0;
  for (const Segment& segment : segments) {
    ASSERT_NE(segment.kind, Segment::Kind::foreign) << describe(segments);
    if (segment.kind == Segment::Kind::silence) {
      silent += segment.length;
      continue;
    }
    EXPECT_TRUE(segment.first.position == next || segment.first.position == next + silent)
        << describe(segments);
    next = segment.endPosition();
  }
  EXPECT_LE(silent, recorder.lostFrames()) << describe(segments);
}

}  // namespace
}  // namespace audrel::pwtest
