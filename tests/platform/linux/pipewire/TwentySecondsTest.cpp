// On a busy machine cycles are lost for real: a recording is exact, or every gap in it is a
// reported one.

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/RealTime.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/pipewire/harness/Track.h"

namespace audrel::pwtest {
namespace {

using namespace std::chrono_literals;

TEST(RealTime, twentySecondsAreExactOrEveryGapWasReported) {
  TestServer server(realTime());
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  const Stopwatch stopwatch;
  std::this_thread::sleep_for(20s);
  ASSERT_EQ(recorder.stop(), 0);
  const double expected = stopwatch.frames();
  const auto stretches = player.report("music").stretches;

  ASSERT_FALSE(recorder.samples().hasFailed());
  const Audio audio = recorder.samples().audio();
  std::string problem;
  const auto track = onlyTrack(audio, stretches, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_TRUE(isExactButFor(*track, recorder.lostFrames())) << problem;
  EXPECT_NEAR(static_cast<double>(framesOf(audio)), expected, 4096);
  RecordProperty("lostFrames", static_cast<int>(recorder.lostFrames()));
}

}  // namespace
}  // namespace audrel::pwtest
