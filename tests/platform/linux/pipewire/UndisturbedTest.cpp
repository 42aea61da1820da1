// A recording changes nothing for the application that is recorded, however the recorder ends.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/SinkMonitor.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/support/ChildProcess.h"

namespace audrel::pwtest {
namespace {

using namespace std::chrono_literals;

const Links toTheSpeakers = stereoLinks({"music"}, {"speakers"});

/// What a recorder could disturb.
struct Circumstances {
  std::set<std::string> links;  ///< but those to the tap
  std::string volume;

  bool operator==(const Circumstances&) const = default;
};

Circumstances circumstances(TestServer& server) {
  return {.links = server.session().linksFrom("music", "audrel-tap"),
          .volume = server.session().volumeOf("music")};
}

TEST(Undisturbed, linksVolumeAndQuantumStayBeforeDuringAndAfterARecording) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  ASSERT_TRUE(server.step(50, toTheSpeakers));
  const Circumstances before = circumstances(server);
  EXPECT_EQ(before.links, (std::set<std::string>{"FL -> speakers:FL", "FR -> speakers:FR"}));
  EXPECT_NE(before.volume, "");

  Recorder recorder(server);
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(server.step(100, heard({"music"})));
  EXPECT_EQ(circumstances(server), before);
  ASSERT_EQ(recorder.stop(), 0);
  ASSERT_TRUE(server.step(50, toTheSpeakers));

  EXPECT_EQ(circumstances(server), before);
  EXPECT_EQ(server.session().linksFrom("music"), before.links);
  const auto report = player.report("music");
  EXPECT_EQ(report.shortestQuantum, 1024U);
  EXPECT_EQ(report.longestQuantum, 1024U);
  EXPECT_EQ(report.stretches.size(), 1U) << "it was interrupted";
}

TEST(Undisturbed, theSinkPlaysOnExactlyWhileRecordingsStartAndStop) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  SinkMonitor monitor(server.socketPath());
  Links monitored = toTheSpeakers;
  monitored["speakers -> test-monitor"] = 2;
  Links recorded = monitored;
  recorded["music -> audrel-tap"] = 2;
  ASSERT_TRUE(server.step(50, monitored));
  for (int round = 0; round < 3; ++round) {
    Recorder recorder(server);
    ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
    ASSERT_TRUE(server.step(100, recorded));
    ASSERT_EQ(recorder.stop(), 0);
    ASSERT_TRUE(server.step(50, monitored));
  }

  EXPECT_EQ(segmentsOf(monitor.samples().audio()),
            std::vector{stampedSegment(0, 500 * 1024, {1, 0})});
}

// A process that is killed in the midst of a cycle never finishes it. So these cycles come by
// themselves, as a sound card's, at twenty times real time.
TEST(Undisturbed, theSinkPlaysOnExactlyWhenTheRecorderIsKilled) {
  TestServer server({.timesRealTime = 20});
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  SinkMonitor monitor(server.socketPath());
  Links monitored = toTheSpeakers;
  monitored["speakers -> test-monitor"] = 2;
  ASSERT_TRUE(waitFor([&] { return server.session().activeLinks() == monitored; }));
  monitor.roundTrip();
  ASSERT_TRUE(monitor.samples().waitForMore(48'000));
  const std::size_t begin = monitor.samples().frames();
  for (int round = 0; round < 3; ++round) {
    const auto recorder = support::ChildProcess::start(
        {.arguments = {AUDREL_TEST_RECORDER, server.socketPath(), std::to_string(player.pid())},
         .environment = {}});
    ASSERT_TRUE(recorder);
    ASSERT_EQ(recorder->readLine(20s), "recording");
    ASSERT_TRUE(server.session().hasNode("audrel-tap"));
    recorder->end(SIGKILL);
    ASSERT_TRUE(monitor.samples().waitForMore(96'000));
    ASSERT_TRUE(waitFor([&] { return !server.session().hasNode("audrel-tap"); }));
  }
  monitor.stop();

  EXPECT_EQ(server.session().linksFrom("music"),
            (std::set<std::string>{"FL -> speakers:FL", "FR -> speakers:FR"}));
  EXPECT_FALSE(monitor.samples().hasFailed());
  Audio audio = monitor.samples().audio();
  audio.erase(audio.begin(), audio.begin() + 2 * static_cast<std::ptrdiff_t>(begin));
  const auto segments = segmentsOf(audio);
  ASSERT_EQ(segments.size(), 1U) << describe(segments);
  EXPECT_EQ(segments.front().kind, Segment::Kind::stamped) << describe(segments);
}

}  // namespace
}  // namespace audrel::pwtest
