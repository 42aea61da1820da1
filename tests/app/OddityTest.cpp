// What looks like a mistake in the controller and is none. docs/decisions.md says why each is so.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "tests/app/AppDelegateTest.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class AppOddities : public AppDelegateTest {
 protected:
  std::vector<std::string> attachedMenus() const { return world.journal.lines("statusItem.menu"); }
};

TEST(AppOddity, theStoredFormatIsReadAtLaunchAndNotUsed) {
  fakes::DesktopWorld world;
  world.userDefaults.values = {{"format", "no format at all"}};
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  app->applicationDidFinishLaunching();
  EXPECT_THAT(world.journal.lines("stringForKey(\"format\")"), SizeIs(2));
  EXPECT_THAT(world.journal.lines("setString"), IsEmpty());
}

TEST(AppOddity, theActivationPolicyIsSetTwice) {
  fakes::DesktopWorld world;
  world.appKit.application.setActivationPolicy(NS::ActivationPolicy::accessory);
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  app->applicationDidFinishLaunching();
  EXPECT_THAT(world.journal.lines("application.setActivationPolicy(1)"), SizeIs(2));
}

TEST_F(AppOddities, theOutputURLAndTheWarningSurviveAStop) {
  start();
  tickAt(3600);
  stop();
  EXPECT_EQ(Inspector::currentOutputURL(*app), firstM4A);
  EXPECT_TRUE(Inspector::warningFired(*app));
}

TEST_F(AppOddities, theWarningSurvivesAStartThatFailsAndIsResetByOneThatSucceeds) {
  start();
  tickAt(3600);
  stop();
  world.hardware.fail(Call::deviceStart, -1);
  start();
  EXPECT_TRUE(Inspector::warningFired(*app));
  world.hardware.restore(Call::deviceStart);
  start();
  EXPECT_FALSE(Inspector::warningFired(*app));
}

TEST_F(AppOddities, theMenuReadsTheClockForAnElapsedTimeThatItDoesNotShow) {
  start();
  journal();
  world.clock.advance(std::chrono::seconds(65));
  statusItem().open();
  EXPECT_THAT(world.journal.lines("now()"), ElementsAre("now() -> 65 s"));
  EXPECT_THAT(fakes::shown(menu()), testing::Not(testing::HasSubstr("01:05")));
}

TEST_F(AppOddities, theHintIsWrittenAndNeverReadAndTheSelectionNeverRestored) {
  openAndChoose("Radio");
  relaunch();
  EXPECT_THAT(marked(), ElementsAre("All System Audio", "M4A (AAC 256 kbps)"));
  start();
  stop();
  relaunch();
  statusItem().open();
  EXPECT_EQ(Inspector::selectedSource(*app), RecordingSource::allSystemAudio());
  EXPECT_EQ(world.userDefaults.values["sourceName"], "Radio");
  EXPECT_THAT(world.journal.lines("stringForKey(\"source"), IsEmpty());
}

TEST_F(AppOddities, terminationLeavesTheTimerTheStatusItemAndTheMenuAsTheyAre) {
  start();
  journal();
  const auto attached = statusItem().weakMenu();
  app->applicationWillTerminate();
  EXPECT_TRUE(Inspector::hasUITimer(*app));
  EXPECT_EQ(world.runLoop.scheduled(), 1U);
  EXPECT_THAT(button().image(), testing::HasSubstr("waveform.circle.fill"));
  EXPECT_FALSE(attached.expired());
}

TEST_F(AppOddities, theLastRecordingIsStoredAtTheStartAndNotAtTheStop) {
  start();
  EXPECT_EQ(world.userDefaults.values["lastRecordingPath"], firstM4A);
  journal();
  stop();
  EXPECT_THAT(world.journal.lines("setString"), IsEmpty());
}

TEST_F(AppOddities, theMenuIsNotRebuiltAfterARefusedStart) {
  world.captureAccess.isGranted = false;
  start();
  EXPECT_THAT(attachedMenus(), IsEmpty());
}

TEST_F(AppOddities, theMenuIsNotRebuiltAfterAFailedStart) {
  world.hardware.fail(Call::createProcessTap, -1);
  start();
  EXPECT_THAT(attachedMenus(), IsEmpty());
}

TEST_F(AppOddities, revealAsksForAFileOfThisRunWithoutLookingWhetherItExists) {
  start();
  stop();
  world.fileManager.existing.clear();
  journal();
  choose("Reveal Last Recording in Finder");
  EXPECT_THAT(revealed(), ElementsAre(firstM4A));
  EXPECT_THAT(world.journal.lines("fileExists"), IsEmpty());
}

TEST_F(AppOddities, theSelectionCommandsDoNotLookAtARunningRecording) {
  statusItem().open();
  const auto radioItem = statusItem().menu().item("Radio");
  const auto wav = statusItem().menu().item("WAV (48 kHz / 16-bit)");
  start();
  fakes::FakeMenuItem::choose(radioItem);
  fakes::FakeMenuItem::choose(wav);
  EXPECT_TRUE(isRecording());
  EXPECT_EQ(Inspector::engine(*app).source(), RecordingSource::allSystemAudio());
  EXPECT_EQ(statusItem().menu().contents().items.front().title, "Recording from: Radio");
  stop();
  start();
  EXPECT_EQ(Inspector::engine(*app).source(), radio());
  EXPECT_EQ(Inspector::currentOutputURL(*app)->filename(), "audio-Radio-2026-11-16-070900.wav");
}

using AppOddityDeathTest = AppOddities;

TEST_F(AppOddityDeathTest, aURLThatDoesNotParseEndsTheProcessFromThePermissionAlert) {
  world.urlParser.parses = false;
  world.captureAccess.isGranted = false;
  EXPECT_EXIT(start(), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(AppOddityDeathTest, aURLThatDoesNotParseEndsTheProcessFromTheAboutAlert) {
  world.urlParser.parses = false;
  world.appKit.user.answer = NS::alertSecondButtonReturn;
  EXPECT_EXIT(choose("About Audrel…"), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(AppOddities, aURLThatDoesNotParseMattersToNobodyWhoDoesNotOpenIt) {
  world.urlParser.parses = false;
  choose("About Audrel…");
  EXPECT_THAT(world.journal.lines("urlWithString"), IsEmpty());
}

}  // namespace
}  // namespace audrel
