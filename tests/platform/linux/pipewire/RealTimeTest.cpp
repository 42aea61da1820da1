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

TEST(RealTime, aServerThatDiesAndComesBackLeavesSilenceOfTheRightLength) {
  TestServer server(realTime());
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  const auto process = recorder.waitForProcess(player.pid());
  const Stopwatch sinceCall;
  ASSERT_EQ(recorder.startProcess(process), 0);
  const Stopwatch sinceReturn;
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
  const double shortest = sinceReturn.frames();
  ASSERT_EQ(recorder.stop(), 0);
  const double longest = sinceCall.frames();

  ASSERT_FALSE(recorder.samples().hasFailed());
  Audio audio = recorder.samples().audio();
  removeHalfLinkedStarts(audio);
  EXPECT_GE(static_cast<double>(framesOf(audio)), shortest - 4096);
  EXPECT_LE(static_cast<double>(framesOf(audio)), longest + 4096);
  const auto segments = segmentsWithoutLead(audio);
  EXPECT_FALSE(hasKind(segments, Segment::Kind::foreign)) << describe(segments);
  EXPECT_EQ(segments.front().first.stream, 1U) << describe(segments);
  EXPECT_EQ(segments.back().first.stream, 2U) << describe(segments);
  EXPECT_GE(static_cast<double>(recorder.lostFrames()), outageFrames - 4096);
  EXPECT_THAT(recorder.log().lines(), Contains(HasSubstr("error: Audio server lost")));
  EXPECT_THAT(recorder.log().lines(), Contains(HasSubstr("info: Audio server found again")));
}

TEST(RealTime, changesOfTheDefaultOutputAndItsDriverLoseNothing) {
  ServerOptions options = realTime();
  options.sinks = {{"speakers"}, {"headphones"}};
  TestServer server(options);
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  ASSERT_NE(recorder.waitForProcess(player.pid()), 0U);
  const Stopwatch sinceCall;
  ASSERT_EQ(recorder.startEverything(), 0);
  const Stopwatch sinceReturn;
  for (const char* sink : {"headphones", "speakers"}) {
    ASSERT_TRUE(recorder.waitForMore(24'000));
    server.session().setDefaultSink(sink);
  }
  ASSERT_TRUE(recorder.waitForMore(24'000));
  const double shortest = sinceReturn.frames();
  ASSERT_EQ(recorder.stop(), 0);
  const double longest = sinceCall.frames();

  ASSERT_FALSE(recorder.samples().hasFailed());
  Audio audio = recorder.samples().audio();
  removeHalfLinkedStarts(audio);
  EXPECT_GE(static_cast<double>(framesOf(audio)), shortest - 4096);
  // The first cycle of another driver follows the last one's at once: what the application plays
  // next comes sooner, by up to two cycles.
  EXPECT_LE(static_cast<double>(framesOf(audio)), longest + 2 * 2048 + 4096);
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
