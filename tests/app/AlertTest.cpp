#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "tests/app/AppDelegateTest.h"

namespace audrel {
namespace {

using fakes::AlertRecord;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* opensThePrivacyPane[] = {
    "urlWithString(\"x-apple.systempreferences:com.apple.preference.security?Privacy_"
    "ScreenCapture\") -> URL",
    "workspace.openURL(\"x-apple.systempreferences:com.apple.preference.security?Privacy_"
    "ScreenCapture\") -> true"};

class Alerts : public AppDelegateTest {
 protected:
  /// The one alert that was shown.
  const AlertRecord& alert() const { return *world.appKit.alerts.at(0); }

  void about() { choose("About Audrel\xE2\x80\xA6"); }

  void refusedStart() {
    world.captureAccess.isGranted = false;
    start();
  }

  std::vector<std::string> afterTheAnswer() const {
    auto lines = world.journal.lines();
    const auto answer = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
      return line.starts_with("alert.runModal() -> ");
    });
    lines.erase(lines.begin(), answer + 1);
    return lines;
  }
};

TEST_F(Alerts, thatAskForThePermission) {
  refusedStart();
  EXPECT_EQ(alert(),
            (AlertRecord{"Permission needed",
                         "Audrel needs permission to record system audio.\nGrant \"Screen & System "
                         "Audio Recording\" in System Settings to continue.",
                         NS::AlertStyle::warning,
                         {"Open System Settings", "Cancel"},
                         1}));
}

TEST_F(Alerts, thatAskForThePermissionOpenThePrivacyPaneAtTheFirstButton) {
  world.appKit.user.answer = NS::alertFirstButtonReturn;
  refusedStart();
  EXPECT_THAT(afterTheAnswer(), testing::ElementsAreArray(opensThePrivacyPane));
}

TEST_F(Alerts, thatAskForThePermissionDoNothingAtAnyOtherAnswer) {
  for (const NS::ModalResponse answer : {NS::alertSecondButtonReturn, NS::ModalResponse{-1000}}) {
    world.journal.clear();
    world.appKit.user.answer = answer;
    refusedStart();
    EXPECT_THAT(afterTheAnswer(), IsEmpty());
  }
}

TEST_F(Alerts, thatAskForThePermissionCareNotWhetherThePaneOpens) {
  world.appKit.workspace.opensURLs = false;
  refusedStart();
  EXPECT_EQ(world.appKit.alerts.size(), 1U);
}

TEST_F(Alerts, ofAFailureHaveOneButtonWhoseAnswerIsIgnored) {
  world.hardware.fail(Call::createProcessTap, -50);
  for (const NS::ModalResponse answer : {NS::alertFirstButtonReturn, NS::alertSecondButtonReturn}) {
    world.journal.clear();
    world.appKit.user.answer = answer;
    start();
    EXPECT_THAT(afterTheAnswer(), IsEmpty());
  }
  EXPECT_EQ(alert(),
            (AlertRecord{"Recording failed",
                         "Could not create the audio tap (OSStatus -50). Try restarting Audrel.",
                         NS::AlertStyle::critical,
                         {"OK"},
                         1}));
}

AlertRecord aboutText(const std::string& permission) {
  return {"Audrel 1.0.0",
          "Records your Mac's audio output \xE2\x80\x94 no microphone, no virtual drivers.\n"
          "Built on Apple's Core Audio Tap API (macOS 14.2+).\n\nTCC permission: " +
              permission,
          NS::AlertStyle::informational,
          {"OK", "Open Privacy Settings"},
          1};
}

TEST_F(Alerts, aboutTheProgramEndInGrantedWhenThePermissionIs) {
  about();
  EXPECT_EQ(alert(), aboutText("granted"));
}

TEST_F(Alerts, aboutTheProgramEndInNotGrantedWhenThePermissionIsNot) {
  world.captureAccess.isGranted = false;
  about();
  EXPECT_EQ(alert(), aboutText("not granted"));
}

TEST_F(Alerts, aboutTheProgramAskForThePermissionAtThatMomentAndNeverRequestIt) {
  about();
  world.captureAccess.isGranted = false;
  about();
  EXPECT_EQ(*world.appKit.alerts.at(1), aboutText("not granted"));
  EXPECT_THAT(world.journal.lines("CG"), ElementsAre("CGPreflightScreenCaptureAccess() -> true",
                                                     "CGPreflightScreenCaptureAccess() -> false"));
}

TEST_F(Alerts, aboutTheProgramOpenThePrivacyPaneAtTheSecondButton) {
  world.appKit.user.answer = NS::alertSecondButtonReturn;
  about();
  EXPECT_THAT(afterTheAnswer(), testing::ElementsAreArray(opensThePrivacyPane));
}

TEST_F(Alerts, aboutTheProgramDoNothingAtAnyOtherAnswer) {
  for (const NS::ModalResponse answer : {NS::alertFirstButtonReturn, NS::ModalResponse{-1000}}) {
    world.journal.clear();
    world.appKit.user.answer = answer;
    about();
    EXPECT_THAT(afterTheAnswer(), IsEmpty());
  }
}

}  // namespace
}  // namespace audrel
