// What the menu-bar program tells of itself by notifications, with a panel and without.

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/platform/linux/program/harness/Session.h"

namespace audrel::programtest {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;

class Notifications : public Session {
 protected:
  /// The next one, as it is sent.
  std::string next() {
    while (const auto call = desktop.nextCall(30s)) {
      if (call->starts_with("Notify ")) {
        ++count;
        return *call;
      }
      if (call->starts_with("CloseNotification ")) {
        closed = *call;
      }
    }
    return "none";
  }

  /// The user pushes a button of the newest.
  void push(const char* key) {
    desktop.emitSignal("/org/freedesktop/Notifications", "org.freedesktop.Notifications",
                       "ActionInvoked", g_variant_new("(us)", count, key));
  }

  /// The user starts the program that runs already.
  void activate() {
    const auto second = startAgain();
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->waitForEnd(), 1);
  }

  sessiontest::TestService desktop = notifications("['actions']");
  std::uint32_t count = 0;
  std::string closed;  ///< the newest call that took one away
};

TEST_F(Notifications, tellOnceThatARecordingIsSavedAndShowIt) {
  auto files = service("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                       {{"ShowItems", "()"}});
  startProgram();
  startRecording();
  ASSERT_TRUE(hearASecond());
  stopRecording();
  EXPECT_THAT(next(), ContainsRegex("'Recording saved', '" + recording().filename().string() +
                                    ", 00:[0-5][0-9]', \\['show-file', 'Show in Folder'\\], "));
  EXPECT_EQ(count, 1U) << "a start is told by the icon";
  EXPECT_THAT(desktop.furtherCalls(), IsEmpty());
  push("show-file");
  EXPECT_EQ(nextCall(files, "ShowItems"), "(['file://" + recording().string() + "'], '')");
}

TEST_F(Notifications, ofASavedRecordingAreLeftOutForWhomDoesNotWantThem) {
  startProgram();
  std::filesystem::create_directories(home.path() / ".config/audrel");
  std::ofstream(home.path() / ".config/audrel/defaults.ini") << "[Defaults]\nnotifySaved=no\n";
  startRecording();
  ASSERT_TRUE(hearASecond());
  stopRecording();
  EXPECT_THAT(desktop.furtherCalls(), IsEmpty());
}

TEST_F(Notifications, areTakenAwayWhenTheProgramEnds) {
  startProgram();
  startRecording();
  activate();
  EXPECT_THAT(next(), HasSubstr("['stop', 'Stop Recording']"));
  choose("Quit Audrel");
  EXPECT_EQ(waitForEnd(), 0);
  EXPECT_EQ(nextCall(desktop, "CloseNotification"), "(1,)");
}

TEST_F(Notifications, ofASavedRecordingAreLeftOutWhenTheProgramEnds) {
  startProgram();
  startRecording();
  ASSERT_TRUE(hearASecond());
  choose("Quit Audrel");
  EXPECT_EQ(waitForEnd(), 0);
  EXPECT_THAT(desktop.furtherCalls(), IsEmpty());
}

/// A desktop whose panel shows no icons.
class NoPanel : public Notifications {
 protected:
  void SetUp() override {
    Notifications::SetUp();
    panel->stopWatcher();
    panel->startWatcher(false);
  }
};

TEST_F(NoPanel, isWhereNotificationsDoWhatTheMenuDoes) {
  const std::string whereToGo = "Its entry in the launcher starts and stops recordings.', ";
  startProgram();
  EXPECT_THAT(next(),
              HasSubstr("'Audrel is running', 'Ready to record All System Audio. " + whereToGo +
                        "['start', 'Start Recording', 'choose', 'Choose Source…'], "));
  push("choose");
  EXPECT_THAT(next(), HasSubstr("'What is to be recorded?', 'Chosen: All System Audio.', "
                                "['source-0', 'All System Audio', 'source-1', 'Web Radio'], "));
  push("source-1");
  EXPECT_THAT(next(), HasSubstr("'Audrel is running', 'Ready to record Web Radio. "));
  push("start");
  EXPECT_THAT(next(), AllOf(HasSubstr("'Audrel is recording', 'Web Radio, since "),
                            HasSubstr(whereToGo + "['stop', 'Stop Recording'], ")));
  ASSERT_TRUE(waitForIcon("recording"));
  ASSERT_TRUE(hearASecond());
  activate();
  EXPECT_THAT(next(), HasSubstr("'Audrel is recording', 'Web Radio, since "));
  push("stop");
  EXPECT_THAT(next(), AllOf(HasSubstr("'Recording saved', 'audio-Web-Radio-"),
                            HasSubstr("['show-file', 'Show in Folder']")));
  EXPECT_EQ(closed, "CloseNotification (5,)");
  EXPECT_TRUE(waitForIcon("idle-symbolic"));
  activate();
  EXPECT_THAT(next(), HasSubstr("'Audrel is running', 'Ready to record Web Radio. "));
}

}  // namespace
}  // namespace audrel::programtest
