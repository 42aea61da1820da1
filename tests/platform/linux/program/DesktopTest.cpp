// What the desktop and its user ask of the menu-bar program beside recording, and what it tells
// them.

#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/program/harness/Session.h"
#include "tests/platform/linux/session/harness/XServer.h"

namespace audrel::programtest {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Desktop = Session;

TEST_F(Desktop, withoutADisplayGetsAboutAsANotification) {
  auto shown = notifications();
  startProgram();
  choose("About Audrel…");
  EXPECT_THAT(nextCall(shown, "Notify"),
              HasSubstr("'Audrel 1.0.0', \"Records your computer's audio output — no microphone, "
                        "no virtual drivers.\\nBuilt on PipeWire.\\n\\nPermission to capture: "
                        "granted\""));
  EXPECT_THAT(shown.furtherCalls(), IsEmpty()) << "nobody asked for settings";
}

TEST_F(Desktop, withoutAnAudioServerIsNotToldThatCapturingIsPermitted) {
  auto shown = notifications();
  environment["PIPEWIRE_REMOTE"] = (home.path() / "nobody").string();
  startProgram();
  choose("About Audrel…");
  EXPECT_THAT(nextCall(shown, "Notify"),
              HasSubstr("\\n\\nPermission to capture: not known\\n\\nPipeWire is not running: no "
                        "server answers at " +
                        environment["PIPEWIRE_REMOTE"]));
}

TEST_F(Desktop, withoutASoftwareCenterIsToldWhereUpdatesComeFrom) {
  auto shown = notifications();
  startProgram();
  choose("Check for Updates in Software Center…");
  EXPECT_THAT(
      nextCall(shown, "Notify"),
      HasSubstr("'Audrel does not update itself', \"If it came as a package, the package manager "
                "updates it together with everything else. If it was built from its sources, build "
                "newer ones.\\nThis desktop has no software center that could show Audrel's "
                "page.\""));
}

TEST_F(Desktop, withoutAnAudioServerIsToldWhyNothingIsRecorded) {
  auto shown = notifications();
  environment["PIPEWIRE_REMOTE"] = (home.path() / "nobody").string();
  startProgram();
  choose("Start Recording");
  EXPECT_THAT(nextCall(shown, "Notify"),
              AllOf(HasSubstr("'Recording failed'"),
                    HasSubstr("PipeWire is not running: no server answers at " +
                              environment["PIPEWIRE_REMOTE"])));
  EXPECT_TRUE(waitForIcon("idle-symbolic"));
  EXPECT_THAT(recordings(), IsEmpty());
  EXPECT_THAT(openMenu(), AllOf(HasSubstr("'Start Recording'"), HasSubstr("'No audible apps'")));
}

TEST_F(Desktop, isToldWhenTheProgramRunsAlready) {
  auto shown = notifications();
  startProgram();
  startRecording();
  const auto second = startAgain();
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->waitForEnd(), 1);
  EXPECT_THAT(nextCall(shown, "Notify"),
              AllOf(HasSubstr("'Audrel is recording', 'All System Audio, since "),
                    HasSubstr("Its icon in the panel has the menu.'")));
  EXPECT_THAT(shown.furtherCalls(), IsEmpty()) << "one says it";
  EXPECT_EQ(panel->registrations().size(), 1U);
  stopRecording();
}

TEST_F(Desktop, startsStopsAndQuitsThroughTheLaunchersActions) {
  startProgram();
  EXPECT_EQ(performAction("stop-recording"), "");
  EXPECT_EQ(performAction("start-recording"), "");
  ASSERT_TRUE(waitForIcon("recording"));
  EXPECT_EQ(performAction("start-recording"), "");
  ASSERT_TRUE(hearASecond());
  EXPECT_THAT(openMenu(), HasSubstr("'Recording from: All System Audio'"));
  EXPECT_EQ(performAction("stop-recording"), "");
  ASSERT_TRUE(waitForIcon("idle-symbolic"));
  EXPECT_GE(pwtest::framesOf(pwtest::readM4a(recording())), 48'000U);

  EXPECT_EQ(performAction("start-recording"), "");
  ASSERT_TRUE(waitForIcon("recording"));
  ASSERT_TRUE(hearASecond());
  performAction("quit");
  EXPECT_EQ(waitForEnd(), 0);
  ASSERT_EQ(recordings().size(), 2U);
  EXPECT_GE(pwtest::framesOf(pwtest::readM4a(recordings().back())), 48'000U);
}

TEST_F(Desktop, startsAndStopsThroughOneActionAndTellsWhetherItRecords) {
  const auto isRecording = [this] {
    return panel->properties("/io/github/audrel/Audrel", "io.github.audrel.Audrel")["Recording"];
  };
  startProgram();
  EXPECT_EQ(isRecording(), "false");
  panel->takeSignals();
  EXPECT_EQ(performAction("toggle-recording"), "");
  ASSERT_TRUE(waitForIcon("recording"));
  EXPECT_EQ(isRecording(), "true");
  EXPECT_THAT(panel->takeSignals(), Contains("PropertiesChanged('io.github.audrel.Audrel', "
                                             "{'Recording': <true>}, @as [])"));
  EXPECT_EQ(performAction("toggle-recording"), "");
  ASSERT_TRUE(waitForIcon("idle-symbolic"));
  EXPECT_EQ(isRecording(), "false");
  EXPECT_THAT(panel->takeSignals(), Contains("PropertiesChanged('io.github.audrel.Audrel', "
                                             "{'Recording': <false>}, @as [])"));
  EXPECT_EQ(recordings().size(), 1U);
}

TEST_F(Desktop, startsAndStopsWhenBothCommandsArriveTogether) {
  startProgram();
  performActionsTogether({"start-recording", "stop-recording"});
  ASSERT_TRUE(panel->runUntil([this] { return recordings().size() == 1; }));
  EXPECT_TRUE(waitForIcon("idle-symbolic")) << "it records on, unnoticed";
}

TEST_F(Desktop, stopsAndStartsWhenBothCommandsArriveTogether) {
  startProgram();
  startRecording();
  ASSERT_TRUE(hearASecond());
  performActionsTogether({"stop-recording", "start-recording"});
  EXPECT_TRUE(panel->runUntil([this] { return recordings().size() == 2; }));
  EXPECT_TRUE(waitForIcon("recording"));
  stopRecording();
  EXPECT_EQ(recordings().size(), 2U);
}

/// A desktop whose panel reports that it shows the menu.
class OpenedMenu : public Session {
 protected:
  void report() { EXPECT_EQ(panel->callMenu("Event", "(0, 'opened', <0>, uint32 7)").error, ""); }

  /// Whether the encoder of M4A is loaded.
  bool isReady() const {
    std::ifstream maps("/proc/" + std::to_string(program->pid()) + "/maps");
    const std::string text(std::istreambuf_iterator<char>(maps), {});
    return text.find("libavcodec") != std::string::npos;
  }
};

TEST_F(OpenedMenu, isReadyToRecordM4ABeforeThatIsChosen) {
  startProgram();
  openMenu();
  panel->runFor(200ms);
  EXPECT_FALSE(isReady()) << "panels announce a menu long before they show it";
  report();
  EXPECT_TRUE(panel->runUntil([this] { return isReady(); }));
  startRecording();
  ASSERT_TRUE(hearASecond());
  stopRecording();
  EXPECT_GE(pwtest::framesOf(pwtest::readM4a(recording())), 48'000U);
}

TEST_F(OpenedMenu, ofAUserOfWAVNeverLoadsTheEncoder) {
  startProgram();
  openMenu();
  chooseWavOfWebRadio();
  report();
  startRecording();
  ASSERT_TRUE(hearASecond());
  report();
  stopRecording();
  EXPECT_FALSE(isReady());
}

/// A desktop with a display, on which "About" is up.
class Alert : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
    environment.erase("DISPLAY");
    environment.erase("XDG_DATA_DIRS");  // the window system's icons
    startProgram();
    openMenu();
    choose("About Audrel…");
    ASSERT_TRUE(panel->runUntil([this] { return isUp(); }));
  }

  /// Whether the menu says so.
  bool isUp() { return openMenu().find("'Start Recording' enabled=false") != std::string::npos; }

  sessiontest::XServer xServer;
};

TEST_F(Alert, leavesOnlyQuitToChoose) {
  const std::string menu = openMenu();
  for (const std::string title :
       {"Start Recording", "About Audrel…", "Check for Updates in Software Center…",
        "WAV (48 kHz / 16-bit)", "Web Radio"}) {
    EXPECT_THAT(menu, HasSubstr("'" + title + "' enabled=false"));
  }
  EXPECT_THAT(menu, HasSubstr("'Quit Audrel'\n"));
  EXPECT_EQ(performAction("start-recording"), "");
  const auto start = panel->idOf("Start Recording");
  ASSERT_TRUE(start);
  clickOn(*start);
  panel->runFor(100ms);
  EXPECT_TRUE(isUp());
  EXPECT_THAT(recordings(), IsEmpty());
  choose("Quit Audrel");
  EXPECT_EQ(waitForEnd(), 0);
}

TEST_F(Alert, givesTheMenuBackOnceItIsAnswered) {
  // It is a window of its helper's: the program has none.
  ASSERT_TRUE(panel->runUntil([this] { return xServer.connections() == 1; }));
  const sessiontest::KeyPresses user("Return");
  ASSERT_TRUE(panel->runUntil([this] { return !isUp(); }));
  startRecording();
  stopRecording();
  EXPECT_TRUE(panel->runUntil([this] { return xServer.connections() == 0; }));
}

}  // namespace
}  // namespace audrel::programtest
