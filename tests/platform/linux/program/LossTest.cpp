// What is left of a recording when something is lost in the middle of it: the program itself, its
// bus, panel, display or audio server, or the user's session.

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/Track.h"
#include "tests/platform/linux/program/harness/WavRecording.h"
#include "tests/platform/linux/session/harness/DesktopSessionManager.h"
#include "tests/platform/linux/session/harness/XServer.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Waiting.h"

namespace audrel::programtest {
namespace {

using namespace std::chrono_literals;
using pwtest::onTheWay;
using pwtest::Segment;
using testing::AllOf;
using testing::HasSubstr;

class Loss : public WavRecording {};

TEST_F(Loss, toASignalCostsNothing) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    SCOPED_TRACE(strsignal(signal));
    if (!isRunning()) {
      std::error_code error;
      std::filesystem::remove(recording(), error);
      startRecorded();
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
  auto desktop = notifications();
  const std::uint64_t frame = played();
  server.crash();
  EXPECT_THAT(nextCall(desktop, "Notify"),
              HasSubstr("'Recording silence', 'The audio server has gone. The recording goes on in "
                        "silence until it is back.'"));
  server.restart();
  ASSERT_TRUE(server.isRunning());
  ASSERT_TRUE(player.reconnect());
  ASSERT_TRUE(player.open("music", 2));
  ASSERT_TRUE(player.waitForMore("music", 3 * second));
  const std::uint64_t frameOfSecond = played();
  EXPECT_TRUE(waitForIcon("recording"));
  EXPECT_THAT(nextCall(desktop, "Notify"),
              HasSubstr("'Recording sound again', 'The audio server is back.'"));
  stopRecording();
  EXPECT_THAT(nextCall(desktop, "Notify"), HasSubstr("'Recording with gaps', 'Up to "));

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

TEST_F(Loss, ofTheSourceIsToldInThePanelAndInTheTerminal) {
  auto desktop = notifications();
  const auto file = home.path() / "take.wav";
  const auto command = support::ChildProcess::start(
      {.arguments = {AUDREL_COMMAND, "--app", "Web Radio", "--output", file, "--quiet"},
       .environment = environment,
       .keepsErrors = true});
  ASSERT_NE(command, nullptr);
  ASSERT_TRUE(support::waitFor([&] {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return !error && size > 10'000;
  }));
  player.end(SIGKILL);
  EXPECT_TRUE(support::waitFor([&] {
    return command->errorOutput().find(
               "audrel-record: Web Radio has quit. The recording goes on "
               "in silence: you can stop it.\n") != std::string::npos;
  })) << command->errorOutput();
  command->signal(SIGTERM);
  EXPECT_EQ(command->waitForEnd(), 0);
  EXPECT_THAT(nextCall(desktop, "Notify"),
              HasSubstr("'Recording silence', 'Web Radio has quit. The recording goes on in "
                        "silence: you can stop it.'"));
  stopRecording();
}

TEST_F(Loss, ofTheDiskIsToldAndCostsNothingOnceThereIsRoomAgain) {
  auto desktop = notifications();
  const rlimit small{200'000, RLIM_INFINITY};
  const rlimit usual{RLIM_INFINITY, RLIM_INFINITY};
  ASSERT_EQ(prlimit(program->pid(), RLIMIT_FSIZE, &small, nullptr), 0);
  EXPECT_THAT(nextCall(desktop, "Notify"),
              AllOf(HasSubstr("'Recording cannot be saved'"), HasSubstr("largest size"),
                    HasSubstr("Nothing is lost yet: memory holds about 6 minutes.")));
  ASSERT_EQ(prlimit(program->pid(), RLIMIT_FSIZE, &usual, nullptr), 0);
  EXPECT_THAT(nextCall(desktop, "Notify"), HasSubstr("'Recording is saved again'"));
  expectStopsWhole();
}

/// How a desktop tells its programs that the user logs out.
class Logout : public Loss, public testing::WithParamInterface<sessiontest::SessionManagerKind> {
 protected:
  void SetUp() override {
    Loss::SetUp();
    ASSERT_TRUE(manager.nextCall());
  }

  sessiontest::DesktopSessionManager manager{bus.address(), GetParam()};
};

TEST_P(Logout, costsNothing) {
  const std::uint64_t frame = played();
  manager.tell(sessiontest::DesktopSessionManager::clientPath, "EndSession");
  EXPECT_EQ(waitForEnd(), 0);
  expectRecordedUntil(frame - onTheWay);
}

INSTANTIATE_TEST_SUITE_P(Desktops, Logout,
                         testing::Values(sessiontest::gnomeSessionManager,
                                         sessiontest::xfceSessionManager),
                         [](const auto& desktop) {
                           return std::string(desktop.param.clientInterface).substr(4, 4);
                         });

/// On a desktop with a display.
class DisplayLoss : public Loss {
 protected:
  void SetUp() override {
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

}  // namespace
}  // namespace audrel::programtest
