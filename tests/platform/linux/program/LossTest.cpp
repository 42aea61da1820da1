// What is left of a recording when something is lost in the middle of it: the program itself, its
// bus, panel, display or audio server, or the user's session.

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/Track.h"
#include "tests/platform/linux/program/harness/Session.h"
#include "tests/platform/linux/session/harness/XServer.h"
#include "tests/platform/linux/tray/harness/SessionManager.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::programtest {
namespace {

using namespace std::chrono_literals;
using pwtest::onTheWay;
using pwtest::Segment;
using testing::HasSubstr;

constexpr std::uint64_t second = 48'000;  // frames

// A killed program loses what it has not written, which is counted in time: there the graph goes no
// faster than the processors do.
constexpr double inRealTime = 1;

/// Whether all but a second of what was `played`, in frames, is in the file of a recording that
/// goes on: what a kill would leave. `recorded` counts that in a copy. Waited for, since a machine
/// may be too busy to let the program write.
bool isWrittenButForASecond(
    traytest::Panel& panel, const std::filesystem::path& recording,
    const std::function<std::uint64_t()>& played,
    const std::function<std::uint64_t(const std::filesystem::path&)>& recorded) {
  const support::TemporaryFolder folder;
  const std::filesystem::path copy = folder / recording.filename();
  return panel.runUntil([&] {
    std::error_code error;
    std::filesystem::copy_file(recording, copy, std::filesystem::copy_options::overwrite_existing,
                               error);
    const std::uint64_t frames = played();
    return !error && recorded(copy) + second >= frames;
  });
}

/// A recording of stamped noise as WAV, which runs for some seconds of the graph already.
class Loss : public Session {
 protected:
  using Session::Session;

  void SetUp() override {
    Session::SetUp();
    startLong();
  }

  void startLong() {
    startProgram();
    openMenu();
    choose("Web Radio");
    ASSERT_TRUE(waitForCheckmark("Web Radio", true));
    choose("WAV (48 kHz / 16-bit)");
    ASSERT_TRUE(waitForCheckmark("WAV (48 kHz / 16-bit)", true));
    startRecording();
    ASSERT_TRUE(player.waitForMore("music", 3 * second));
  }

  std::uint64_t played() { return player.report("music").playedFrames; }

  /// Up to which frame of the stream a file is that stream, without a break.
  static std::uint64_t recordedUntil(const std::filesystem::path& file) {
    pwtest::Audio audio = pwtest::readWav(file);
    pwtest::removeHalfLinkedStarts(audio);
    std::string problem;
    const auto track = pwtest::onlyTrack(audio, &problem);
    if (!track) {
      ADD_FAILURE() << problem;
      return 0;
    }
    EXPECT_LE(track->begin, pwtest::longestLead);
    EXPECT_EQ(track->silent, 0U) << problem;
    EXPECT_EQ(track->end, pwtest::framesOf(audio)) << problem;
    return track->first.position + (track->end - track->begin);
  }

  void expectRecordedUntil(std::uint64_t frame) const {
    EXPECT_GE(recordedUntil(recording()), frame);
  }

  /// That the program goes on and stops as ever.
  void expectStopsWhole() {
    ASSERT_TRUE(hearASecond());
    const std::uint64_t frame = played();
    stopRecording();
    expectRecordedUntil(frame - onTheWay);
  }
};

class KillLoss : public Loss {
 protected:
  KillLoss() : Loss({.timesRealTime = inRealTime}) {}
};

TEST_F(KillLoss, costsASecondAtMost) {
  std::uint64_t frame = 0;
  EXPECT_TRUE(isWrittenButForASecond(
      *panel, recording(), [this] { return played(); },
      [&](const std::filesystem::path& copy) { return frame = recordedUntil(copy); }));
  kill(program->pid(), SIGKILL);
  EXPECT_EQ(waitForEnd(), -1);
  expectRecordedUntil(frame);
}

TEST_F(Loss, toASignalCostsNothing) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    SCOPED_TRACE(strsignal(signal));
    if (!isRunning()) {
      std::error_code error;
      std::filesystem::remove(recording(), error);
      startLong();
    }
    const std::uint64_t frame = played();
    kill(program->pid(), signal);
    EXPECT_EQ(waitForEnd(), 0);
    expectRecordedUntil(frame - onTheWay);
  }
}

TEST_F(Loss, ofTheBusCostsNothingAndTheItemComesBack) {
  bus.crash();
  ASSERT_TRUE(hearASecond());
  bus.restart();
  ASSERT_TRUE(bus.isRunning());
  panel = std::make_unique<traytest::Panel>(bus.address());
  panel->startWatcher();
  ASSERT_TRUE(panel->findItem());
  EXPECT_TRUE(waitForIcon("recording"));
  EXPECT_THAT(openMenu(), HasSubstr("'Recording from: Web Radio'"));
  expectStopsWhole();
}

TEST_F(Loss, ofTheBusForGoodCostsNothingWhenTheProgramIsToldToEnd) {
  bus.crash();
  ASSERT_TRUE(hearASecond());
  const std::uint64_t frame = played();
  kill(program->pid(), SIGTERM);
  EXPECT_EQ(waitForEnd(), 0);
  expectRecordedUntil(frame - onTheWay);
}

TEST_F(Loss, ofThePanelCostsNothingAndTheItemComesBack) {
  panel->stopWatcher();
  ASSERT_TRUE(hearASecond());
  panel->startWatcher();
  ASSERT_TRUE(panel->runUntil([this] { return panel->registrations().size() == 2; }));
  expectStopsWhole();
}

TEST_F(Loss, ofTheAudioServerCostsWhatWasPlayedInItsLastSecondAtMost) {
  const std::uint64_t frame = played();
  server.crash();
  std::this_thread::sleep_for(300ms);
  server.restart();
  ASSERT_TRUE(server.isRunning());
  ASSERT_TRUE(player.reconnect());
  ASSERT_TRUE(player.open("music", 2));
  ASSERT_TRUE(player.waitForMore("music", 3 * second));
  const std::uint64_t frameOfSecond = played();
  EXPECT_TRUE(waitForIcon("recording"));
  stopRecording();

  pwtest::Audio audio = pwtest::readWav(recording());
  pwtest::removeHalfLinkedStarts(audio);
  const auto segments = pwtest::segmentsWithoutLead(audio);
  ASSERT_EQ(segments.size(), 3U) << describe(segments);
  EXPECT_EQ(segments[0].first.stream, 1U) << describe(segments);
  EXPECT_GE(segments[0].endPosition(), frame - second) << describe(segments);
  EXPECT_EQ(segments[1].kind, Segment::Kind::silence) << describe(segments);
  EXPECT_EQ(segments[2].first.stream, 2U) << describe(segments);
  EXPECT_GE(segments[2].endPosition(), frameOfSecond - onTheWay) << describe(segments);
}

/// How a desktop tells its programs that the user logs out.
class Logout : public Loss, public testing::WithParamInterface<traytest::SessionManager::Desktop> {
 protected:
  void SetUp() override {
    manager = std::make_unique<traytest::SessionManager>(bus.address(), GetParam());
    Loss::SetUp();
    ASSERT_TRUE(panel->runUntil([this] { return !manager->calls().empty(); }));
  }

  std::unique_ptr<traytest::SessionManager> manager;
};

TEST_P(Logout, costsNothing) {
  const std::uint64_t frame = played();
  manager->tell(traytest::SessionManager::clientPath, "EndSession");
  panel->runFor(50ms);  // the bus has it
  EXPECT_EQ(waitForEnd(), 0);
  expectRecordedUntil(frame - onTheWay);
}

INSTANTIATE_TEST_SUITE_P(Desktops, Logout,
                         testing::Values(traytest::SessionManager::Desktop::gnome,
                                         traytest::SessionManager::Desktop::xfce));

/// On a desktop with a display.
class DisplayLoss : public Loss {
 protected:
  void SetUp() override {
    ASSERT_TRUE(xServer.isRunning());
    environment.erase("DISPLAY");
    Loss::SetUp();
  }

  sessiontest::XServer xServer;
};

TEST_F(DisplayLoss, costsNothingSinceTheProgramHasNoDisplay) {
  EXPECT_EQ(xServer.connections(), 0U);
  xServer.crash();
  expectStopsWhole();
}

/// A recording of a tone as M4A.
class ToneLoss : public Session {
 protected:
  ToneLoss() : Session({.timesRealTime = inRealTime}) {}

  void SetUp() override {
    Session::SetUp();
    ASSERT_TRUE(player.close("music"));
    ASSERT_TRUE(player.open("music", "tone:1000 f32 2 48000"));
    startProgram();
    startRecording();
    begin = player.report("music").playedFrames;
    ASSERT_TRUE(player.waitForMore("music", 4 * second));
  }

  /// How much was played since the recording started.
  std::uint64_t played() { return player.report("music").playedFrames - begin; }

  void expectRecorded(std::uint64_t frames) const {
    const pwtest::Audio audio = pwtest::readM4a(recording());
    EXPECT_GE(pwtest::framesOf(audio), frames);
    pwtest::expectUnbrokenTone(audio, pwtest::longestLead, 1000, 0.005);
  }

  std::uint64_t begin = 0;
};

TEST_F(ToneLoss, throughAKillCostsASecondAtMost) {
  std::uint64_t frames = 0;
  EXPECT_TRUE(isWrittenButForASecond(
      *panel, recording(), [this] { return played(); },
      [&](const std::filesystem::path& copy) {
        return frames = pwtest::framesOf(pwtest::readM4a(copy));
      }));
  kill(program->pid(), SIGKILL);
  EXPECT_EQ(waitForEnd(), -1);
  expectRecorded(frames);
}

TEST_F(ToneLoss, toASignalCostsNothing) {
  const std::uint64_t frames = played();
  kill(program->pid(), SIGHUP);
  EXPECT_EQ(waitForEnd(), 0);
  expectRecorded(frames - onTheWay);
}

}  // namespace
}  // namespace audrel::programtest
