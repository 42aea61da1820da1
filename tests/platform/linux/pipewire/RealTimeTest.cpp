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
using testing::StartsWith;

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
  EXPECT_THAT(recorder.log().lines(), Contains(StartsWith("Audio server found again")));
}

/// That the recording is one stream of which nothing is missing but what was reported as lost.
void expectNothingMissingBut(std::uint64_t lostFrames, Audio audio) {
  removeHalfLinkedStarts(audio);
  const auto segments = segmentsWithoutLead(audio);
  std::uint64_t next = segments.front().first.position;
  std::uint64_t missing = 0;
  for (const Segment& segment : segments) {
    ASSERT_NE(segment.kind, Segment::Kind::foreign) << describe(segments);
    if (segment.kind == Segment::Kind::silence) {
      continue;
    }
    ASSERT_EQ(segment.first.stream, 1U) << describe(segments);
    ASSERT_GE(segment.first.position, next) << describe(segments);
    missing += segment.first.position - next;
    next = segment.endPosition();
  }
  EXPECT_EQ(segments.back().kind, Segment::Kind::stamped) << describe(segments);
  EXPECT_LE(missing, lostFrames) << describe(segments);
}

TEST_F(RealTime, aQuantumThatIsForcedLosesNothingThatIsNotReported) {
  start([this] { return recorder.startProcess(process); });
  for (const std::uint32_t quantum : {2048U, 256U, 1024U}) {
    ASSERT_TRUE(recorder.waitForMore(24'000));
    server.session().setClock("clock.force-quantum", quantum);
  }
  ASSERT_TRUE(recorder.waitForMore(24'000));
  // Each time 1.x stops everything, and the pause of the last cycles counts in whole cycles.
  const Audio audio = stop(3 * 2 * 2048);

  expectNothingMissingBut(recorder.lostFrames(), audio);
}

class TwoOutputs : public RealTime {
 protected:
  TwoOutputs() : RealTime({{"speakers"}, {"headphones"}}) {}
};

TEST_F(TwoOutputs, changesOfTheDefaultAndItsDriverLoseNothingThatIsNotReported) {
  start([this] { return recorder.startEverything(); });
  for (const char* sink : {"headphones", "speakers"}) {
    ASSERT_TRUE(recorder.waitForMore(24'000));
    server.session().setDefaultSink(sink);
  }
  ASSERT_TRUE(recorder.waitForMore(24'000));
  // The first cycle of another driver follows the last one's at once: what the application plays
  // next comes sooner, by up to two cycles.
  const Audio audio = stop(2 * 2048);

  expectNothingMissingBut(recorder.lostFrames(), audio);
}

}  // namespace
}  // namespace audrel::pwtest
