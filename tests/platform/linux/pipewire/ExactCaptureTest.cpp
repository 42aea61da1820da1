// What is recorded is what was played, to the sample, on a server that loses no cycle.

#include <gtest/gtest.h>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"

namespace audrel::pwtest {
namespace {

TEST(ExactCapture, oneProcessIsRecordedToTheSampleAndWithoutABreak) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.isReady());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  const auto process = recorder.waitForProcess(player.pid());
  ASSERT_NE(process, 0U);
  ASSERT_EQ(recorder.startProcess(process), 0);
  ASSERT_TRUE(recorder.waitForFrames(480'000));
  ASSERT_EQ(recorder.stop(), 0);

  ASSERT_FALSE(recorder.hasFailed());
  const auto segments = withoutLead(segmentsOf(recorder.audio()));
  ASSERT_EQ(segments.size(), 1U) << describe(segments);
  EXPECT_EQ(segments.front().kind, Segment::Kind::stamped);
  EXPECT_EQ(segments.front().first.stream, 1U);
  EXPECT_EQ(recorder.lostFrames(), 0U);
}

}  // namespace
}  // namespace audrel::pwtest
