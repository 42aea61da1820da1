// A recording changes nothing for the application that is recorded, however the recorder ends.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <set>
#include <string>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/SinkMonitor.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/pipewire/harness/Track.h"
#include "tests/support/ChildProcess.h"

namespace audrel::pwtest {
namespace {

using namespace std::chrono_literals;

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

// What the sink plays before the first recording may break where its own links form.
constexpr std::size_t beforeRecordings = 48'000;  // frames

/// That the sink has played the stream without a break, from before the first recording on.
void expectUndisturbed(SinkMonitor& monitor) {
  monitor.stop();
  ASSERT_FALSE(monitor.samples().hasFailed());
  Audio audio = monitor.samples().audio();
  audio.erase(audio.begin(), audio.begin() + 2 * beforeRecordings);
  std::string problem;
  const auto track = onlyTrack(audio, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_EQ(track->begin, 0U) << problem;
  EXPECT_EQ(track->silent, 0U) << problem;
  EXPECT_EQ(track->end, framesOf(audio)) << problem;
}

TEST(Undisturbed, linksVolumeAndQuantumStayBeforeDuringAndAfterARecording) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  ASSERT_TRUE(player.waitForMore("music", 48'000));
  const Circumstances before = circumstances(server);
  EXPECT_EQ(before.links, (std::set<std::string>{"FL -> speakers:FL", "FR -> speakers:FR"}));
  EXPECT_NE(before.volume, "");

  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(recorder.waitForMore(240'000));
  EXPECT_GT(server.session().linksFrom("music").size(), before.links.size());
  EXPECT_EQ(circumstances(server), before);
  ASSERT_EQ(recorder.stop(), 0);
  ASSERT_TRUE(player.waitForMore("music", 48'000));

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
  ASSERT_TRUE(monitor.samples().waitForMore(2 * beforeRecordings));
  for (int round = 0; round < 3; ++round) {
    Recorder recorder(server.socketPath());
    ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
    ASSERT_TRUE(recorder.waitForMore(96'000));
    ASSERT_EQ(recorder.stop(), 0);
    ASSERT_TRUE(monitor.samples().waitForMore(48'000));
  }

  expectUndisturbed(monitor);
}

TEST(Undisturbed, theSinkPlaysOnExactlyWhenTheRecorderIsKilled) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  SinkMonitor monitor(server.socketPath());
  ASSERT_TRUE(monitor.samples().waitForMore(2 * beforeRecordings));
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

  EXPECT_EQ(server.session().linksFrom("music"),
            (std::set<std::string>{"FL -> speakers:FL", "FR -> speakers:FR"}));
  expectUndisturbed(monitor);
}

}  // namespace
}  // namespace audrel::pwtest
