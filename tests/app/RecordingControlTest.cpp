#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/app/AppDelegateTest.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RecordingControl : public AppDelegateTest {
 protected:
  std::vector<std::filesystem::path> urls() const {
    std::vector<std::filesystem::path> all;
    for (const auto& file : world.audio.files) {
      all.push_back(file->url);
    }
    return all;
  }

  /// The fields are those of a program that has just been launched.
  void expectNothingChanged() {
    EXPECT_FALSE(isRecording());
    EXPECT_EQ(Inspector::selectedSource(*app), RecordingSource::allSystemAudio());
    EXPECT_THAT(Inspector::processSnapshot(*app), IsEmpty());
    EXPECT_EQ(Inspector::currentOutputURL(*app), std::nullopt);
    EXPECT_FALSE(Inspector::hasUITimer(*app));
    EXPECT_FALSE(Inspector::warningFired(*app));
    EXPECT_THAT(world.userDefaults.values, IsEmpty());
    EXPECT_EQ(world.runLoop.scheduled(), 0U);
  }
};

TEST_F(RecordingControl, startRecordsTheSelectedSourceInTheStoredFormat) {
  world.userDefaults.values["format"] = "wav";
  openAndChoose("Radio");
  start();
  EXPECT_EQ(Inspector::engine(*app).source(), radio());
  EXPECT_THAT(urls(), ElementsAre("/home/listener/Downloads/audio-Radio-2026-11-16-070900.wav"));
  EXPECT_EQ(menu().items.front().title, "Recording from: Radio");
}

TEST_F(RecordingControl, startTakesAnotherNameWhenTheFirstIsTaken) {
  world.fileManager.existing.insert(firstM4A);
  start();
  EXPECT_THAT(urls(),
              ElementsAre("/home/listener/Downloads/audio-SystemMix-2026-11-16-070900-2.m4a"));
}

TEST_F(RecordingControl, refusedPermissionShowsOnlyThePermissionAlertAndNamesNoFile) {
  world.captureAccess.isGranted = false;
  world.appKit.user.answer = NS::alertSecondButtonReturn;
  start();
  ASSERT_EQ(world.appKit.alerts.size(), 1U);
  EXPECT_EQ(world.appKit.alerts.front()->messageText, "Permission needed");
  auto lines = journal();
  std::erase_if(lines, [](const std::string& line) { return line.starts_with("alert."); });
  EXPECT_THAT(lines, ElementsAre("the user chooses \"Start Recording\"",
                                 "CGPreflightScreenCaptureAccess() -> false",
                                 "CGRequestScreenCaptureAccess() -> false", "NSAlert()"));
  expectNothingChanged();
}

TEST_F(RecordingControl, permissionThatTheRequestGrantsStartsTheRecording) {
  world.captureAccess.isGranted = false;
  world.captureAccess.requestGrants = true;
  start();
  EXPECT_TRUE(isRecording());
  EXPECT_THAT(world.appKit.alerts, IsEmpty());
  EXPECT_THAT(world.journal.lines("CG"), ElementsAre("CGPreflightScreenCaptureAccess() -> false",
                                                     "CGRequestScreenCaptureAccess() -> true",
                                                     "CGPreflightScreenCaptureAccess() -> true"));
}

TEST_F(RecordingControl, failedStartShowsTheErrorsDescriptionAndChangesNothing) {
  world.hardware.fail(Call::deviceStart, -50);
  start();
  ASSERT_EQ(world.appKit.alerts.size(), 1U);
  EXPECT_EQ(world.appKit.alerts.front()->messageText, "Recording failed");
  EXPECT_EQ(world.appKit.alerts.front()->informativeText,
            "Could not install the audio callback (OSStatus -50).");
  EXPECT_EQ(world.journal.lines().back(), "alert.runModal() -> 1000");
  expectNothingChanged();
}

TEST_F(RecordingControl, failedStartLeavesTheLastRecordingAtThePreviousOneAndTheNextSucceeds) {
  start();
  stop();
  world.hardware.fail(Call::deviceStart, -50);
  start();
  EXPECT_EQ(world.userDefaults.values["lastRecordingPath"], firstM4A);
  EXPECT_EQ(Inspector::currentOutputURL(*app), firstM4A);
  world.hardware.restore();
  start();
  EXPECT_TRUE(isRecording());
}

TEST_F(RecordingControl, failedWritesAndAProcessThatQuitsEndNoRecordingAndShowNoAlert) {
  openAndChoose("Radio");
  start();
  world.audio.writeError = NS::Error{NS::POSIXErrorDomain, 28, "The disk is full."};
  world.hardware.cycle(fakes::InputCycle({4096}).list());
  world.dispatch.queue().runAll();
  world.hardware.processObjects.clear();
  tickAt(1);
  statusItem().open();
  EXPECT_TRUE(isRecording());
  EXPECT_THAT(world.appKit.alerts, IsEmpty());
  EXPECT_EQ(button().title(), " 00:01");
}

TEST_F(RecordingControl, fiftyRecordingsLeaveNothingBehind) {
  for (int round = 0; round < 50; ++round) {
    start();
    stop();
  }
  EXPECT_THAT(world.hardware.taps(), IsEmpty());
  EXPECT_THAT(world.hardware.aggregateDevices(), IsEmpty());
  EXPECT_EQ(world.runLoop.scheduled(), 0U);
  const auto all = urls();
  EXPECT_EQ(std::set(all.begin(), all.end()).size(), 50U);
}

}  // namespace
}  // namespace audrel
