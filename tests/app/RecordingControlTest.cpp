#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <set>

#include "platform/CoreGraphics.h"
#include "tests/app/AppDelegateTest.h"
#include "tests/ui/ExpectedMenus.h"

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

TEST_F(RecordingControl, startIsTheWholeSequence) {
  start();
  EXPECT_THAT(
      summary(),
      ElementsAre("the user chooses \"Start Recording\"",
                  "CGPreflightScreenCaptureAccess() -> true", "stringForKey(\"format\") -> nil",
                  "now() -> 0 s", "downloadsDirectory() -> \"/home/listener/Downloads\"",
                  "nameIsTaken(\"" + std::string(firstM4A) + "\") -> false",
                  "CGPreflightScreenCaptureAccess() -> true", "engine starts",
                  "setString(\"" + std::string(firstM4A) + "\", \"lastRecordingPath\")",
                  "scheduleRepeatingTimer(1 s) -> timer 1", "now() -> 0 s",
                  "draws waveform.circle.fill Red \" 00:00\"", "stringForKey(\"format\") -> nil",
                  "now() -> 0 s", "attaches a new menu"));
}

TEST_F(RecordingControl, startSetsTheFields) {
  start();
  EXPECT_TRUE(isRecording());
  EXPECT_EQ(Inspector::currentOutputURL(*app), firstM4A);
  EXPECT_EQ(world.userDefaults.values["lastRecordingPath"], firstM4A);
  EXPECT_TRUE(Inspector::hasUITimer(*app));
  EXPECT_EQ(world.runLoop.scheduled(), 1U);
  EXPECT_FALSE(Inspector::warningFired(*app));
  EXPECT_EQ(menu(),
            expected::menu(expected::recordingItems(*app, "Recording from: All System Audio", true),
                           app.get()));
}

TEST_F(RecordingControl, startRecordsTheSelectedSourceInTheStoredFormat) {
  world.userDefaults.values["format"] = "wav";
  openAndChoose("Radio");
  start();
  EXPECT_EQ(Inspector::engine(*app).source(), radio());
  EXPECT_THAT(urls(), ElementsAre("/home/listener/Downloads/audio-Radio-2026-11-16-070900.wav"));
  EXPECT_EQ(menu(), expected::menu(expected::recordingItems(*app, "Recording from: Radio", true),
                                   app.get()));
}

TEST_F(RecordingControl, startReadsTheFormatOnceForTheNameAndTheEngine) {
  start();
  const auto lines = journal();
  const auto engineStart = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
    return line.starts_with("AudioHardwareCreateProcessTap");
  });
  EXPECT_EQ(std::count(lines.begin(), engineStart, "stringForKey(\"format\") -> nil"), 1);
}

TEST_F(RecordingControl, startTakesAnotherNameWhenTheFirstIsTaken) {
  world.fileManager.existing.insert(firstM4A);
  start();
  EXPECT_THAT(urls(),
              ElementsAre("/home/listener/Downloads/audio-SystemMix-2026-11-16-070900-2.m4a"));
}

TEST_F(RecordingControl, stopIsTheWholeSequence) {
  start();
  journal();
  stop();
  EXPECT_THAT(summary(), ElementsAre("the user chooses \"Stop Recording\"", "engine stops",
                                     "timer 1.invalidate()", "draws waveform.circle \"\"",
                                     "stringForKey(\"format\") -> nil", "attaches a new menu"));
}

TEST_F(RecordingControl, stopSetsTheFields) {
  start();
  stop();
  EXPECT_FALSE(isRecording());
  EXPECT_FALSE(Inspector::hasUITimer(*app));
  EXPECT_EQ(world.runLoop.scheduled(), 0U);
  EXPECT_EQ(menu(), expected::menu(
                        expected::idleItems(
                            *app, expected::sourceSubmenu(*app, true, {expected::noAudibleApps()}),
                            expected::m4aIsOn(*app), true),
                        app.get()));
}

TEST_F(RecordingControl, afterAStopTheControllerAndThePreferencesStillNameTheFile) {
  start();
  stop();
  EXPECT_EQ(Inspector::currentOutputURL(*app), firstM4A);
  EXPECT_EQ(world.userDefaults.values["lastRecordingPath"], firstM4A);
}

TEST_F(RecordingControl, stopShowsNoAlert) {
  start();
  stop();
  EXPECT_THAT(world.appKit.alerts, IsEmpty());
}

TEST_F(RecordingControl, secondToggleStopsAndAThirdStartsAnotherFileAndResetsTheWarning) {
  app->toggleRecording(nullptr);
  world.fileManager.existing.insert(firstM4A);
  tickAt(3600);
  ASSERT_TRUE(Inspector::warningFired(*app));
  app->toggleRecording(nullptr);
  EXPECT_FALSE(isRecording());
  world.clock.date = fakes::FakeClock::epoch();
  app->toggleRecording(nullptr);
  EXPECT_TRUE(isRecording());
  EXPECT_FALSE(Inspector::warningFired(*app));
  EXPECT_THAT(
      urls(),
      ElementsAre(firstM4A, "/home/listener/Downloads/audio-SystemMix-2026-11-16-070900-2.m4a"));
}

TEST_F(RecordingControl, refusedPermissionShowsOnlyThePermissionAlertAndNamesNoFile) {
  world.captureAccess.isGranted = false;
  world.appKit.user.answer = NS::alertSecondButtonReturn;
  const auto attached = statusItem().weakMenu();
  start();
  EXPECT_THAT(world.journal.lines(),
              ElementsAre("the user chooses \"Start Recording\"",
                          "CGPreflightScreenCaptureAccess() -> false",
                          "CGRequestScreenCaptureAccess() -> false", "NSAlert()",
                          "alert.messageText = \"Permission needed\"",
                          "alert.informativeText = \"Audrel needs permission to record system "
                          "audio.\\nGrant \"Screen & System Audio Recording\" in System Settings "
                          "to continue.\"",
                          "alert.alertStyle = 0", "alert.addButton(\"Open System Settings\")",
                          "alert.addButton(\"Cancel\")", "alert.runModal() begins",
                          "alert.runModal() -> 1001"));
  expectNothingChanged();
  EXPECT_FALSE(attached.expired());
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

TEST_F(RecordingControl, grantedPermissionIsNotRequestedAgain) {
  start();
  EXPECT_THAT(world.journal.lines("CGRequest"), IsEmpty());
}

/// Granted at the first look, and taken away before the second.
class RevokedAccess final : public CG::CaptureAccess {
 public:
  bool preflightScreenCaptureAccess() override { return ++looks_ == 1; }
  bool requestScreenCaptureAccess() override { return false; }

 private:
  int looks_ = 0;
};

TEST(PermissionThatTheEngineMisses, isAFailureAndNotThePermissionAlert) {
  fakes::DesktopWorld world;
  RevokedAccess access;
  const Platform whole = world.platform();
  const Platform platform{
      whole.audioHardware, whole.audioFramework,      access,      whole.clock,    whole.collation,
      whole.fileManager,   whole.runningApplications, whole.uuids, whole.dispatch, whole.log,
      whole.diagnostics};
  const auto app = AppDelegate::make(platform, world.desktop());
  app->applicationDidFinishLaunching();
  app->toggleRecording(nullptr);
  ASSERT_EQ(world.appKit.alerts.size(), 1U);
  EXPECT_EQ(*world.appKit.alerts.front(),
            (fakes::AlertRecord{"Recording failed",
                                "Audrel needs permission to record system audio. Grant \"Screen & "
                                "System Audio Recording\" in System Settings.",
                                NS::AlertStyle::critical,
                                {"OK"},
                                1}));
}

struct Failure {
  std::string name;
  std::function<void(fakes::DesktopWorld&)> breakIt;
  std::string text;
};

void PrintTo(const Failure& failure, std::ostream* stream) {
  *stream << failure.name;
}

Failure failing(const std::string& name, fakes::FakeHardware::Call call, const std::string& text) {
  return {name, [call](fakes::DesktopWorld& world) { world.hardware.fail(call, -50); }, text};
}

class FailedStart : public RecordingControl, public testing::WithParamInterface<Failure> {};

TEST_P(FailedStart, showsTheErrorsDescriptionAndChangesNothing) {
  GetParam().breakIt(world);
  const auto attached = statusItem().weakMenu();
  start();
  ASSERT_EQ(world.appKit.alerts.size(), 1U);
  EXPECT_EQ(*world.appKit.alerts.front(),
            (fakes::AlertRecord{
                "Recording failed", GetParam().text, NS::AlertStyle::critical, {"OK"}, 1}));
  EXPECT_EQ(world.journal.lines().back(), "alert.runModal() -> 1000");
  expectNothingChanged();
  EXPECT_FALSE(attached.expired());
}

using Call = fakes::FakeHardware::Call;

INSTANTIATE_TEST_SUITE_P(
    RecordingControl, FailedStart,
    testing::Values(
        failing("tap", Call::createProcessTap,
                "Could not create the audio tap (OSStatus -50). Try restarting Audrel."),
        failing("tapFormat", Call::tapFormat,
                "Could not read the tap's stream format (OSStatus -50)."),
        failing("aggregateDevice", Call::createAggregateDevice,
                "Could not create the aggregate capture device (OSStatus -50)."),
        failing("ioProc", Call::createIOProcID,
                "Could not install the audio callback (OSStatus -50)."),
        failing("deviceStart", Call::deviceStart,
                "Could not install the audio callback (OSStatus -50)."),
        Failure{"file",
                [](fakes::DesktopWorld& world) {
                  world.audio.openError =
                      NS::Error{NS::POSIXErrorDomain, 2, "The folder doesn't exist."};
                },
                "Could not create the output file: The folder doesn't exist."}),
    [](const auto& test) { return test.param.name; });

TEST_F(RecordingControl, failedStartLeavesTheLastRecordingAtThePreviousOne) {
  start();
  stop();
  world.hardware.fail(Call::deviceStart, -50);
  start();
  EXPECT_EQ(world.userDefaults.values["lastRecordingPath"], firstM4A);
  EXPECT_EQ(Inspector::currentOutputURL(*app), firstM4A);
}

TEST_F(RecordingControl, startSucceedsAfterAFailedOne) {
  world.hardware.fail(Call::deviceStart, -50);
  start();
  world.hardware.restore(Call::deviceStart);
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
