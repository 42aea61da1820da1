// Whole recordings: from an application on an audio server, through the engine, into a file that
// another library reads.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "engine/RecordingEngine.h"
#include "model/RecordingFormat.h"
#include "model/RecordingSource.h"
#include "platform/linux/files/AudioFramework.h"
#include "platform/linux/system/Dispatch.h"
#include "tests/fakes/World.h"
#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::pwtest {
namespace {

/// An engine on a real server, real files and a real queue. What has nothing to do with audio is
/// fake.
class FileRecorder {
 public:
  explicit FileRecorder(const std::string& socketPath) : capture_(socketPath) {}

  void start(pid_t pid, RecordingFormat format, const std::filesystem::path& path) {
    engine_->start(RecordingSource::process(capture_.waitForProcess(pid), "", {}), format, path);
  }
  void stop() { engine_->stop(); }

  std::uint64_t lostFrames() { return capture_.lostFrames(); }
  std::int64_t underruns() const { return engine_->underrunCount(); }

 private:
  fakes::World world_;
  Recorder capture_;
  LogKeeper log_;
  linuxos::Dispatch dispatch_;
  linuxos::AudioFramework framework_{log_};
  std::shared_ptr<RecordingEngine> engine_ = RecordingEngine::make({
      .audioHardware = capture_.hardware(),
      .audioFramework = framework_,
      .captureAccess = world_.captureAccess,
      .clock = world_.clock,
      .collation = world_.collation,
      .fileManager = world_.fileManager,
      .runningApplications = capture_.captureHardware(),
      .uuids = world_.uuids,
      .dispatch = dispatch_,
      .log = log_,
      .diagnostics = capture_.captureHardware(),
  });
};

TEST(WholeRecording, aWavHoldsEveryFrameOfAnApplicationExactly) {
  const support::TemporaryFolder folder;
  TestServer server({.timesRealTime = 10});
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", "stamp:1 s16 2 48000"));
  FileRecorder recorder(server.socketPath());
  recorder.start(player.pid(), RecordingFormat::wav, folder.path() / "music.wav");
  ASSERT_TRUE(player.waitForMore("music", 480'000));
  recorder.stop();

  expectWholeTrack(folder.path() / "music.wav", 1, 480'000);
  EXPECT_EQ(recorder.lostFrames(), 0U);
  EXPECT_EQ(recorder.underruns(), 0);
}

TEST(WholeRecording, twoAtOnceHoldOneApplicationEach) {
  const support::TemporaryFolder folder;
  TestServer server({.timesRealTime = 10});
  ASSERT_TRUE(server.isRunning());
  Player one(server.socketPath());
  Player other(server.socketPath());
  ASSERT_TRUE(one.open("music", 1));
  ASSERT_TRUE(other.open("call", 2));
  FileRecorder ofOne(server.socketPath());
  FileRecorder ofOther(server.socketPath());
  ofOne.start(one.pid(), RecordingFormat::wav, folder.path() / "one.wav");
  ofOther.start(other.pid(), RecordingFormat::wav, folder.path() / "other.wav");
  ASSERT_TRUE(other.waitForMore("call", 240'000));
  ofOther.stop();
  ofOne.stop();

  expectWholeTrack(folder.path() / "one.wav", 1, 240'000);
  expectWholeTrack(folder.path() / "other.wav", 2, 240'000);
}

TEST(WholeRecording, anM4aHoldsAnUnbrokenToneAtItsPitchAndLevel) {
  const support::TemporaryFolder folder;
  TestServer server({.timesRealTime = 4});
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", "tone:1000 f32 2 48000"));
  FileRecorder recorder(server.socketPath());
  recorder.start(player.pid(), RecordingFormat::m4a, folder.path() / "tone.m4a");
  ASSERT_TRUE(player.waitForMore("music", 480'000));
  recorder.stop();

  const Audio audio = readM4a(folder.path() / "tone.m4a");
  ASSERT_GE(framesOf(audio) + onTheWay, 480'000U);
  expectUnbrokenTone(audio, longestLead, 1000, 0.005);
}

}  // namespace
}  // namespace audrel::pwtest
