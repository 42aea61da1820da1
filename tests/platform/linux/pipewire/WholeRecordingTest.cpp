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
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::pwtest {
namespace {

/// An engine on a real server, real files and a real queue. What has nothing to do with audio is
/// fake.
class FileRecorder {
 public:
  explicit FileRecorder(const TestServer& server) : capture_(server) {}

  void start(pid_t pid, RecordingFormat format, const std::filesystem::path& path) {
    engine_->start(RecordingSource::process(capture_.waitForProcess(pid), "", {}), format, path);
  }
  void stop() { engine_->stop(); }

  std::uint64_t lostFrames() { return capture_.lostFrames(); }
  std::int64_t underruns() const { return engine_->underrunCount(); }

 private:
  fakes::World world_;
  Recorder capture_;
  support::KeptLog log_;
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

class WholeRecording : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(server.isRunning()); }

  support::TemporaryFolder folder;
  TestServer server;
  Player player{server.socketPath()};
};

TEST_F(WholeRecording, aWavHoldsEveryFrameOfAnApplicationExactly) {
  ASSERT_TRUE(player.open("music", "stamp:1 s16 2 48000"));
  FileRecorder recorder(server);
  recorder.start(player.pid(), RecordingFormat::wav, folder.path() / "music.wav");
  ASSERT_TRUE(server.step(500, heard({"music"})));
  recorder.stop();

  EXPECT_EQ(segmentsOf(readWav(folder.path() / "music.wav")),
            std::vector{stampedSegment(0, 512'000, {1, 0})});
  EXPECT_EQ(recorder.lostFrames(), 0U);
  EXPECT_EQ(recorder.underruns(), 0);
}

TEST_F(WholeRecording, twoAtOnceHoldOneApplicationEach) {
  Player other(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  ASSERT_TRUE(other.open("call", 2));
  FileRecorder ofOne(server);
  FileRecorder ofOther(server);
  ofOne.start(player.pid(), RecordingFormat::wav, folder.path() / "one.wav");
  ofOther.start(other.pid(), RecordingFormat::wav, folder.path() / "other.wav");
  ASSERT_TRUE(server.step(250, heard({"music", "call"})));
  ofOther.stop();
  ofOne.stop();

  EXPECT_EQ(segmentsOf(readWav(folder.path() / "one.wav")),
            std::vector{stampedSegment(0, 256'000, {1, 0})});
  EXPECT_EQ(segmentsOf(readWav(folder.path() / "other.wav")),
            std::vector{stampedSegment(0, 256'000, {2, 0})});
}

TEST_F(WholeRecording, anM4aHoldsAnUnbrokenToneAtItsPitchAndLevel) {
  ASSERT_TRUE(player.open("music", "tone:1000 f32 2 48000"));
  FileRecorder recorder(server);
  recorder.start(player.pid(), RecordingFormat::m4a, folder.path() / "tone.m4a");
  ASSERT_TRUE(server.step(500, heard({"music"})));
  recorder.stop();

  const Audio audio = readM4a(folder.path() / "tone.m4a");
  ASSERT_EQ(framesOf(audio), 512'000U);
  expectUnbrokenTone(audio, 4800, 1000, 0.005);
}

}  // namespace
}  // namespace audrel::pwtest
