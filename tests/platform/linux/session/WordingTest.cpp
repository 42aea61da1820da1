#include "platform/linux/system/Wording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "app/AppDelegate.h"
#include "model/RecorderError.h"
#include "tests/fakes/DesktopWorld.h"
#include "ui/MenuBuilder.h"

namespace audrel::linuxos {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

void collectTitles(const fakes::MenuContents& menu, std::set<std::string>& texts) {
  for (const fakes::ItemContents& item : menu.items) {
    texts.insert(item.title);
    if (item.submenu) {
      collectTitles(*item.submenu, texts);
    }
  }
}

void collectMenus(std::set<std::string>& texts) {
  fakes::Journal journal;
  fakes::FakeAppKit appKit(journal);
  for (const auto populate : {MenuBuilder::populateIdleMenu, MenuBuilder::populateRecordingMenu}) {
    fakes::FakeMenu menu(journal, 1);
    populate(appKit, menu, MenuBuilder::State{}, {});
    collectTitles(menu.contents(), texts);
  }
}

void collectAlerts(std::set<std::string>& texts, bool isGranted) {
  fakes::DesktopWorld world;
  world.captureAccess.isGranted = isGranted;
  // The second button opens nothing in the alert for the permission, and the settings in the other.
  world.appKit.user.answer = NS::alertSecondButtonReturn;
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  app->applicationDidFinishLaunching();
  app->showAbout(nullptr);
  world.hardware.fail(fakes::FakeHardware::Call::createProcessTap, -1);
  app->toggleRecording(nullptr);
  EXPECT_EQ(world.appKit.alerts.size(), 2U);
  for (const auto& alert : world.appKit.alerts) {
    texts.insert(alert->messageText);
    texts.insert(alert->informativeText);
    texts.insert(alert->buttons.begin(), alert->buttons.end());
  }
}

void collectErrors(std::set<std::string>& texts) {
  const NS::Error error{.domain = NS::POSIXErrorDomain, .code = 1, .localizedDescription = "why"};
  for (const auto& failure :
       {RecorderError::tapCreationFailed(1), RecorderError::aggregateDeviceFailed(1),
        RecorderError::streamFormatUnavailable(1), RecorderError::ioProcInstallFailed(1),
        RecorderError::fileOpenFailed(error), RecorderError::fileWriteFailed(error),
        RecorderError::sourceProcessExited("Player"), RecorderError::permissionDenied(),
        RecorderError::alreadyRecording()}) {
    texts.insert(failure.errorDescription().value_or(""));
  }
}

/// All that a user of the program can read.
std::set<std::string> textsOfTheProgram() {
  std::set<std::string> texts;
  collectMenus(texts);
  collectAlerts(texts, true);
  collectAlerts(texts, false);
  collectErrors(texts);
  return texts;
}

TEST(DesktopWording, leavesNoWordOfAnotherSystem) {
  const auto texts = textsOfTheProgram();
  ASSERT_THAT(texts, Contains("Permission needed"));
  ASSERT_THAT(texts, Contains("Recording failed"));
  for (const std::string& text : texts) {
    for (const char* word :
         {"Finder", "Mac", "macOS", "Apple", "Core Audio", "System Settings", "TCC"}) {
      EXPECT_THAT(desktopWording(text), Not(HasSubstr(word)));
    }
  }
}

TEST(DesktopWording, hasNoTextThatTheProgramDoesNotHave) {
  const auto texts = textsOfTheProgram();
  for (const Wording& wording : wordings()) {
    EXPECT_THAT(texts, Contains(std::string(wording.program)));
    EXPECT_EQ(desktopWording(wording.program), wording.desktop);
    EXPECT_NE(wording.program, wording.desktop);
  }
}

TEST(DesktopWording, saysWhereUpdatesComeFrom) {
  EXPECT_EQ(desktopWording("Check for Updates…"), "Check for Updates in Software Center…");
}

TEST(DesktopWording, changesNoPartOfAText) {
  for (const char* text : {"Finder", "Recording from: Finder", "Reveal Recording in Finder ",
                           "reveal recording in finder", "Mac", "", "Start Recording"}) {
    EXPECT_EQ(desktopWording(text), text);
  }
}

}  // namespace
}  // namespace audrel::linuxos
