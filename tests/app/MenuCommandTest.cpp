#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/app/AppDelegateTest.h"
#include "tests/ui/ExpectedMenus.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Values = std::map<std::string, std::string>;

class MenuCommand : public AppDelegateTest {
 protected:
  fakes::MenuContents idleMenu(const fakes::MenuContents& sources,
                               const fakes::MenuContents& formats, bool canReveal) const {
    return expected::menu(expected::idleItems(*app, sources, formats, canReveal), app.get());
  }

  /// Of "game" and "Radio".
  fakes::MenuContents sources(bool isAllOn, bool isGameOn, bool isRadioOn) const {
    return expected::sourceSubmenu(*app, isAllOn,
                                   {expected::process(*app, "game", isGameOn, game()),
                                    expected::process(*app, "Radio", isRadioOn, radio())});
  }

  bool canReveal(const char* title = "Reveal Last Recording in Finder") {
    return statusItem().menu().item(title)->contents().isEnabled;
  }

  std::vector<std::string> revealed() const { return world.journal.lines("workspace"); }
};

TEST_F(MenuCommand, openingTheMenuIsASnapshotAndARebuild) {
  world.hardware.processObjects = {{70, 700, "org.radio"}};
  statusItem().open();
  EXPECT_THAT(
      summary(),
      ElementsAre(
          "the user opens menu 2",
          "AudioObjectGetPropertyDataSize(1, 'prs#'/'glob'/0, no qualifier, from 0) -> status 0, 4 "
          "bytes",
          "AudioObjectGetPropertyData(1, 'prs#'/'glob'/0, no qualifier, size 4) -> status 0, "
          "objects 70",
          "AudioObjectGetPropertyData(70, 'ppid'/'glob'/0, no qualifier, size 4) -> status 0, "
          "pid 700",
          "AudioObjectGetPropertyData(70, 'pbid'/'glob'/0, no qualifier, size 8, text from \"\") "
          "-> status 0, \"org.radio\"",
          "runningApplication(700)", "stringForKey(\"format\") -> nil",
          "stringForKey(\"lastRecordingPath\") -> nil", "attaches a new menu"));
}

TEST_F(MenuCommand, openingTheMenuListsTheProcesses) {
  statusItem().open();
  EXPECT_EQ(menu(), idleMenu(sources(true, false, false), expected::m4aIsOn(*app), false));
}

TEST_F(MenuCommand, openingTheMenuTwiceTakesTwoSnapshotsAndAProcessThatLeftDisappears) {
  statusItem().open();
  world.hardware.processObjects = {{70, 700, "org.radio"}};
  statusItem().open();
  EXPECT_EQ(menu(), idleMenu(expected::sourceSubmenu(
                                 *app, true, {expected::process(*app, "Radio", false, radio())}),
                             expected::m4aIsOn(*app), false));
  EXPECT_EQ(world.journal.lines("AudioObjectGetPropertyDataSize").size(), 2U);
}

TEST_F(MenuCommand, openingTheMenuWhileRecordingTakesASnapshotToo) {
  start();
  statusItem().open();
  EXPECT_EQ(Inspector::processSnapshot(*app), (std::vector{game(), radio()}));
  EXPECT_EQ(menu(),
            expected::menu(expected::recordingItems(*app, "Recording from: All System Audio", true),
                           app.get()));
}

TEST_F(MenuCommand, openingAnotherMenuThanTheAttachedOneIsTheSame) {
  app->menuWillOpen(nullptr);
  EXPECT_EQ(menu(), idleMenu(sources(true, false, false), expected::m4aIsOn(*app), false));
}

TEST_F(MenuCommand, refreshIsASnapshotAndARebuild) {
  choose("Refresh List");
  EXPECT_EQ(menu(), idleMenu(sources(true, false, false), expected::m4aIsOn(*app), false));
}

TEST_F(MenuCommand, selectingAProcessSelectsItStoresTheHintAndRebuilds) {
  statusItem().open();
  journal();
  choose("Radio");
  EXPECT_THAT(
      summary(),
      ElementsAre("the user chooses \"Radio\"", "setString(\"org.radio\", \"sourceBundleID\")",
                  "setString(\"Radio\", \"sourceName\")", "stringForKey(\"format\") -> nil",
                  "stringForKey(\"lastRecordingPath\") -> nil", "attaches a new menu"));
  EXPECT_EQ(Inspector::selectedSource(*app), radio());
  EXPECT_EQ(menu(), idleMenu(sources(false, false, true), expected::m4aIsOn(*app), false));
}

TEST_F(MenuCommand, selectingAProcessWithoutABundleIdentifierHintsAtItsNameAlone) {
  openAndChoose("Radio");
  openAndChoose("game");
  EXPECT_EQ(world.userDefaults.values, (Values{{"sourceName", "game"}}));
  EXPECT_EQ(menu(), idleMenu(sources(false, true, false), expected::m4aIsOn(*app), false));
}

TEST_F(MenuCommand, selectingAllSystemAudioSelectsItEmptiesTheHintAndRebuilds) {
  openAndChoose("Radio");
  journal();
  choose("All System Audio");
  EXPECT_THAT(
      summary(),
      ElementsAre("the user chooses \"All System Audio\"", "removeObjectForKey(\"sourceBundleID\")",
                  "removeObjectForKey(\"sourceName\")", "stringForKey(\"format\") -> nil",
                  "stringForKey(\"lastRecordingPath\") -> nil", "attaches a new menu"));
  EXPECT_THAT(world.userDefaults.values, IsEmpty());
  EXPECT_EQ(menu(), idleMenu(sources(true, false, false), expected::m4aIsOn(*app), false));
}

TEST_F(MenuCommand, anItemThatRepresentsAllSystemAudioSelectsItAndStoresNoHint) {
  openAndChoose("Radio");
  journal();
  const auto item = world.appKit.makeMenuItem("", std::nullopt, "");
  item->setRepresentedObject(RecordingSource::allSystemAudio());
  app->selectProcess(item);
  EXPECT_EQ(Inspector::selectedSource(*app), RecordingSource::allSystemAudio());
  EXPECT_EQ(world.userDefaults.values,
            (Values{{"sourceBundleID", "org.radio"}, {"sourceName", "Radio"}}));
  EXPECT_EQ(menu(), idleMenu(sources(true, false, false), expected::m4aIsOn(*app), false));
}

TEST_F(MenuCommand, aProcessItemWithoutASourceIsIgnored) {
  openAndChoose("Radio");
  journal();
  const auto item = world.appKit.makeMenuItem("", std::nullopt, "");
  app->selectProcess(item);
  item->setRepresentedObject(std::string("Radio"));
  app->selectProcess(item);
  item->setRepresentedObject(*radio().asProcess());
  app->selectProcess(item);
  app->selectProcess(nullptr);
  EXPECT_THAT(journal(), IsEmpty());
  EXPECT_EQ(Inspector::selectedSource(*app), radio());
}

TEST_F(MenuCommand, selectingAFormatStoresItAndRebuilds) {
  choose("WAV (48 kHz / 16-bit)");
  EXPECT_THAT(summary(),
              ElementsAre("the user chooses \"WAV (48 kHz / 16-bit)\"",
                          "setString(\"wav\", \"format\")", "stringForKey(\"format\") -> \"wav\"",
                          "stringForKey(\"lastRecordingPath\") -> nil", "attaches a new menu"));
  EXPECT_EQ(menu(), idleMenu(expected::sourceSubmenu(*app, true, {expected::noAudibleApps()}),
                             expected::wavIsOn(*app), false));
  choose("M4A (AAC 256 kbps)");
  EXPECT_EQ(world.userDefaults.values, (Values{{"format", "m4a"}}));
  EXPECT_EQ(menu(), idleMenu(expected::sourceSubmenu(*app, true, {expected::noAudibleApps()}),
                             expected::m4aIsOn(*app), false));
}

TEST_F(MenuCommand, choosingWAVWhileRecordingShowsAtOnceAndCountsForTheNextRecording) {
  const auto wav = statusItem().menu().item("WAV (48 kHz / 16-bit)");
  start();
  const auto attached = statusItem().weakMenu();
  fakes::FakeMenuItem::choose(wav);
  EXPECT_TRUE(attached.expired());
  EXPECT_EQ(world.userDefaults.values["format"], "wav");
  stop();
  EXPECT_TRUE(statusItem().menu().item("WAV (48 kHz / 16-bit)")->contents().isOn);
  start();
  ASSERT_EQ(world.audio.files.size(), 2U);
  EXPECT_EQ(world.audio.files[0]->url.extension(), ".m4a");
  EXPECT_EQ(world.audio.files[1]->url.extension(), ".wav");
}

TEST_F(MenuCommand, revealIsNotOfferedBeforeAnythingWasRecordedAndDoesNothing) {
  EXPECT_FALSE(canReveal());
  app->revealLastRecording(nullptr);
  EXPECT_THAT(journal(), ElementsAre("stringForKey(\"lastRecordingPath\") -> nil"));
}

TEST_F(MenuCommand, revealStaysOfferedForTheRestOfTheRunAfterAStart) {
  start();
  EXPECT_TRUE(canReveal("Reveal Recording in Finder"));
  stop();
  world.fileManager.existing.clear();
  statusItem().open();
  EXPECT_TRUE(canReveal());
}

TEST_F(MenuCommand, revealDoesNothingWhenTheStoredFileHasGoneSinceTheMenuWasBuilt) {
  start();
  stop();
  relaunch();
  EXPECT_TRUE(canReveal());
  world.fileManager.existing.clear();
  choose("Reveal Last Recording in Finder");
  EXPECT_THAT(revealed(), IsEmpty());
}

TEST_F(MenuCommand, revealIsOfferedAfterARelaunchAsLongAsTheStoredFileExists) {
  start();
  stop();
  relaunch();
  EXPECT_TRUE(canReveal());
  world.fileManager.existing.clear();
  statusItem().open();
  EXPECT_FALSE(canReveal());
  EXPECT_EQ(world.userDefaults.values["lastRecordingPath"], firstM4A);
}

TEST_F(MenuCommand, revealSelectsTheFileOfTheRecordingThatRuns) {
  start();
  choose("Reveal Recording in Finder");
  EXPECT_THAT(revealed(), ElementsAre("workspace.activateFileViewerSelecting(\"" +
                                      std::string(firstM4A) + "\")"));
}

TEST_F(MenuCommand, revealPrefersTheFileOfThisRunToTheStoredOne) {
  start();
  stop();
  world.userDefaults.values["lastRecordingPath"] = "/elsewhere.m4a";
  world.fileManager.existing.insert("/elsewhere.m4a");
  choose("Reveal Last Recording in Finder");
  EXPECT_THAT(revealed(), ElementsAre("workspace.activateFileViewerSelecting(\"" +
                                      std::string(firstM4A) + "\")"));
}

TEST_F(MenuCommand, revealTakesTheStoredFileWhenThisRunHasNone) {
  world.userDefaults.values["lastRecordingPath"] = "/elsewhere.m4a";
  world.fileManager.existing.insert("/elsewhere.m4a");
  openAndChoose("Reveal Last Recording in Finder");
  EXPECT_THAT(revealed(), ElementsAre("workspace.activateFileViewerSelecting(\"/elsewhere.m4a\")"));
}

TEST_F(MenuCommand, checkForUpdatesIsTheUpdatersAndNothingElse) {
  choose("Check for Updates\xE2\x80\xA6");
  EXPECT_THAT(journal(), ElementsAre("the user chooses \"Check for Updates\xE2\x80\xA6\"",
                                     "updaterController.checkForUpdates()"));
}

TEST_F(MenuCommand, quitTerminatesTheApplicationAndNothingElse) {
  choose("Quit Audrel");
  EXPECT_THAT(journal(),
              ElementsAre("the user chooses \"Quit Audrel\"", "application.terminate()"));
}

TEST_F(MenuCommand, quitWhileRecordingNeitherAsksNorStopsBeforeItTerminates) {
  start();
  journal();
  choose("Quit Audrel");
  EXPECT_THAT(summary(),
              ElementsAre("the user chooses \"Quit Audrel\"", "application.terminate()",
                          "log io.github.audrel.Audrel [app] info: Terminating \xE2\x80\x94 "
                          "stopping in-flight recording",
                          "engine stops"));
}

TEST_F(MenuCommand, noCommandButAStartShowsAnErrorAlert) {
  world.hardware.fail(Call::processObjectList, -50);
  world.urlParser.parses = false;
  openAndChoose("Refresh List");
  choose("All System Audio");
  choose("Check for Updates\xE2\x80\xA6");
  EXPECT_THAT(world.appKit.alerts, IsEmpty());
}

}  // namespace
}  // namespace audrel
