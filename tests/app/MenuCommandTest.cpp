#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/app/AppDelegateTest.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Values = std::map<std::string, std::string>;

constexpr const char* m4a = "M4A (AAC 256 kbps)";
constexpr const char* wav = "WAV (48 kHz / 16-bit)";

class MenuCommand : public AppDelegateTest {
 protected:
  bool canReveal(const char* title = "Reveal Last Recording in Finder") {
    return statusItem().menu().item(title)->contents().isEnabled;
  }

  void fileIsStored(const char* path) {
    world.userDefaults.values["lastRecordingPath"] = path;
    world.fileManager.existing.insert(path);
  }
};

TEST_F(MenuCommand, openingTheMenuTwiceTakesTwoSnapshotsAndAProcessThatLeftDisappears) {
  statusItem().open();
  EXPECT_THAT(applications(), ElementsAre("game", "Radio"));
  world.hardware.processObjects = {{70, 700, "org.radio"}};
  statusItem().open();
  EXPECT_THAT(applications(), ElementsAre("Radio"));
  EXPECT_EQ(world.journal.lines("AudioObjectGetPropertyDataSize").size(), 2U);
}

TEST_F(MenuCommand, openingTheMenuWhileRecordingTakesASnapshotToo) {
  start();
  statusItem().open();
  EXPECT_EQ(Inspector::processSnapshot(*app), (std::vector{game(), radio()}));
  EXPECT_THAT(applications(), IsEmpty());
}

TEST_F(MenuCommand, openingAnotherMenuThanTheAttachedOneIsTheSame) {
  app->menuWillOpen(nullptr);
  EXPECT_THAT(applications(), ElementsAre("game", "Radio"));
}

TEST_F(MenuCommand, refreshIsASnapshotAndARebuild) {
  choose("Refresh List");
  EXPECT_THAT(applications(), ElementsAre("game", "Radio"));
}

TEST_F(MenuCommand, selectingAProcessSelectsItAndStoresTheHint) {
  openAndChoose("Radio");
  EXPECT_EQ(Inspector::selectedSource(*app), radio());
  EXPECT_EQ(world.userDefaults.values,
            (Values{{"sourceBundleID", "org.radio"}, {"sourceName", "Radio"}}));
  EXPECT_THAT(marked(), ElementsAre("Radio", m4a));
}

TEST_F(MenuCommand, selectingAProcessWithoutABundleIdentifierHintsAtItsNameAlone) {
  openAndChoose("Radio");
  openAndChoose("game");
  EXPECT_EQ(world.userDefaults.values, (Values{{"sourceName", "game"}}));
  EXPECT_THAT(marked(), ElementsAre("game", m4a));
}

TEST_F(MenuCommand, selectingAllSystemAudioSelectsItEmptiesTheHintAndRebuilds) {
  openAndChoose("Radio");
  journal();
  choose("All System Audio");
  EXPECT_THAT(world.userDefaults.values, IsEmpty());
  EXPECT_THAT(marked(), ElementsAre("All System Audio", m4a));
  EXPECT_THAT(world.journal.lines("AudioObjectGetPropertyData"), IsEmpty());
}

TEST_F(MenuCommand, anItemThatRepresentsAllSystemAudioSelectsItAndStoresNoHint) {
  openAndChoose("Radio");
  const auto item = world.appKit.makeMenuItem("", std::nullopt, "");
  item->setRepresentedObject(RecordingSource::allSystemAudio());
  app->selectProcess(item);
  EXPECT_EQ(Inspector::selectedSource(*app), RecordingSource::allSystemAudio());
  EXPECT_EQ(world.userDefaults.values["sourceName"], "Radio");
  EXPECT_THAT(marked(), ElementsAre("All System Audio", m4a));
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
  choose(wav);
  EXPECT_EQ(world.userDefaults.values, (Values{{"format", "wav"}}));
  EXPECT_THAT(marked(), ElementsAre("All System Audio", wav));
  choose(m4a);
  EXPECT_EQ(world.userDefaults.values, (Values{{"format", "m4a"}}));
  EXPECT_THAT(marked(), ElementsAre("All System Audio", m4a));
}

TEST_F(MenuCommand, choosingWAVWhileRecordingShowsAtOnceAndCountsForTheNextRecording) {
  const auto item = statusItem().menu().item(wav);
  start();
  const auto attached = statusItem().weakMenu();
  fakes::FakeMenuItem::choose(item);
  EXPECT_TRUE(attached.expired());
  EXPECT_EQ(world.userDefaults.values["format"], "wav");
  stop();
  EXPECT_THAT(marked(), ElementsAre("All System Audio", wav));
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
  EXPECT_THAT(revealed(), ElementsAre(firstM4A));
  EXPECT_TRUE(world.audio.files.front()->isOpen);
}

TEST_F(MenuCommand, revealPrefersTheFileOfThisRunToTheStoredOne) {
  start();
  stop();
  fileIsStored("/elsewhere.m4a");
  choose("Reveal Last Recording in Finder");
  EXPECT_THAT(revealed(), ElementsAre(firstM4A));
}

TEST_F(MenuCommand, checkForUpdatesIsTheUpdatersAndNothingElse) {
  choose("Check for Updates…");
  EXPECT_THAT(journal(), ElementsAre("the user chooses \"Check for Updates…\"",
                                     "updaterController.checkForUpdates()"));
}

TEST_F(MenuCommand, noCommandButAStartShowsAnErrorAlert) {
  world.hardware.fail(Call::processObjectList, -50);
  world.urlParser.parses = false;
  openAndChoose("Refresh List");
  choose("All System Audio");
  choose("Check for Updates…");
  EXPECT_THAT(world.appKit.alerts, IsEmpty());
}

}  // namespace
}  // namespace audrel
