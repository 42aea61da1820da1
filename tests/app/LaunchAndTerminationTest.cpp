#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/RunApplication.h"
#include "tests/app/AppDelegateTest.h"
#include "tests/app/Summary.h"
#include "tests/ui/ExpectedMenus.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::vector<std::string> making{
    "makeLogger(\"io.github.audrel.Audrel\", \"app\")",
    "makeLogger(\"io.github.audrel.Audrel\", \"engine\")",
    "makeQueue(\"io.github.audrel.Audrel.writer\", userInitiated)",
    "statusItem(withLength -1)",
    "button.font = monospacedDigitSystemFont(size 12, weight 0)",
    "button.imagePosition = 2",
    "draws waveform.circle \"\"",
    "SPUStandardUpdaterController(startingUpdater true)",
};

const std::vector<std::string> launching{
    "application.setActivationPolicy(1)",
    "stringForKey(\"format\") -> nil",
    "CGRequestScreenCaptureAccess() -> true",
    "attaches a new menu",
    "stringForKey(\"format\") -> nil",
    "stringForKey(\"lastRecordingPath\") -> nil",
    "attaches a new menu",
};

std::vector<std::string> joined(std::initializer_list<std::vector<std::string>> parts) {
  std::vector<std::string> all;
  for (const auto& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

TEST(ProcessEntry, makesTheControllerBetweenThePolicyAndTheDelegateAndRunsTheEventLoop) {
  fakes::DesktopWorld world;
  EXPECT_EQ(runApplication(world.platform(), world.desktop()), 0);
  EXPECT_EQ(summaryOf(world.journal.lines()),
            joined({{"application.setActivationPolicy(1)"},
                    making,
                    {"application.delegate = delegate", "application.run() begins"},
                    launching,
                    {"application.run() ends"}}));
}

TEST(ProcessEntry, keepsTheControllerForTheWholeRunAndNoLonger) {
  fakes::DesktopWorld world;
  bool wasThere = false;
  world.appKit.application.whileRunning = [&] {
    world.appKit.statusItem().open();
    world.appKit.statusItem().choose("Quit Audrel");
    wasThere = true;
  };
  runApplication(world.platform(), world.desktop());
  EXPECT_TRUE(wasThere);
  EXPECT_THROW(world.appKit.statusItem(), std::runtime_error);
  EXPECT_EQ(world.appKit.liveMenus(), 0U);
}

TEST(Controller, isMadeInTheOrderOfItsFields) {
  fakes::DesktopWorld world;
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  EXPECT_EQ(summaryOf(world.journal.lines()), making);
}

TEST(Controller, hasItsInitialValues) {
  using Inspector = AppDelegateInspector;
  fakes::DesktopWorld world;
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  EXPECT_FALSE(Inspector::engine(*app).isRecording());
  EXPECT_EQ(Inspector::selectedSource(*app), RecordingSource::allSystemAudio());
  EXPECT_THAT(Inspector::processSnapshot(*app), IsEmpty());
  EXPECT_EQ(Inspector::currentOutputURL(*app), std::nullopt);
  EXPECT_FALSE(Inspector::hasUITimer(*app));
  EXPECT_FALSE(Inspector::warningFired(*app));
}

TEST(Launch, isTheWholeSequence) {
  fakes::DesktopWorld world;
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  world.journal.clear();
  app->applicationDidFinishLaunching();
  EXPECT_EQ(summaryOf(world.journal.lines()), launching);
}

TEST(Launch, attachesFirstAnEmptyMenuWhoseDelegateIsTheController) {
  fakes::DesktopWorld world;
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  app->applicationDidFinishLaunching();
  EXPECT_THAT(world.journal.lines("menu 1"),
              ElementsAre("menu 1.autoenablesItems = false", "menu 1.delegate = delegate"));
  EXPECT_THAT(world.journal.lines("statusItem.menu"),
              ElementsAre("statusItem.menu = menu 1", "statusItem.menu = menu 2"));
}

TEST(Launch, andAllThatFollowsSwitchTheAutomaticEnablingOfEachNewMenuOffFirst) {
  fakes::DesktopWorld world;
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  app->applicationDidFinishLaunching();
  world.appKit.statusItem().open();
  world.appKit.statusItem().choose("Start Recording");
  world.appKit.statusItem().choose("Stop Recording");
  const auto lines = world.journal.lines();
  const std::string make = "NSMenu() -> ";
  int menus = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].starts_with(make)) {
      ++menus;
      EXPECT_EQ(lines.at(i + 1), lines[i].substr(make.size()) + ".autoenablesItems = false");
    }
  }
  // The empty one, three idle ones with two submenus each, and the one of a recording.
  EXPECT_EQ(menus, 11);
}

TEST(Launch, endsWithTheMenuOfAFirstRun) {
  fakes::DesktopWorld world;
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  app->applicationDidFinishLaunching();
  EXPECT_EQ(
      world.appKit.statusItem().menu().contents(),
      expected::menu(expected::idleItems(
                         *app, expected::sourceSubmenu(*app, true, {expected::noAudibleApps()}),
                         expected::m4aIsOn(*app), false),
                     app.get()));
}

TEST(Launch, withARefusedPermissionIsTheSame) {
  fakes::DesktopWorld world;
  world.captureAccess.isGranted = false;
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  world.journal.clear();
  app->applicationDidFinishLaunching();
  auto expectedLines = launching;
  expectedLines[2] = "CGRequestScreenCaptureAccess() -> false";
  EXPECT_EQ(summaryOf(world.journal.lines()), expectedLines);
  EXPECT_THAT(world.appKit.alerts, IsEmpty());
}

class Launched : public AppDelegateTest {};

TEST_F(Launched, hasNoProcessesBeforeTheMenuOpensAndThoseOfThatMomentAfterwards) {
  EXPECT_THAT(Inspector::processSnapshot(*app), IsEmpty());
  EXPECT_THAT(world.journal.lines("AudioObjectGetPropertyData"), IsEmpty());
  statusItem().open();
  EXPECT_EQ(Inspector::processSnapshot(*app), (std::vector{game(), radio()}));
}

TEST_F(Launched, againBeginsWithAllSystemAudioWhateverWasSelected) {
  openAndChoose("Radio");
  ASSERT_EQ(Inspector::selectedSource(*app), radio());
  relaunch();
  EXPECT_EQ(Inspector::selectedSource(*app), RecordingSource::allSystemAudio());
  EXPECT_TRUE(statusItem().menu().item("All System Audio")->contents().isOn);
}

TEST_F(Launched, againHasTheFormatThatWasChosen) {
  choose("WAV (48 kHz / 16-bit)");
  relaunch();
  EXPECT_TRUE(statusItem().menu().item("WAV (48 kHz / 16-bit)")->contents().isOn);
}

class Termination : public AppDelegateTest {};

TEST_F(Termination, whileIdleLogsNothingAndTouchesNothing) {
  app->applicationWillTerminate();
  EXPECT_THAT(journal(), IsEmpty());
}

TEST_F(Termination, whileRecordingLogsOnceAndStopsTheEngine) {
  start();
  journal();
  app->applicationWillTerminate();
  EXPECT_THAT(summary(),
              ElementsAre("log io.github.audrel.Audrel [app] info: Terminating \xE2\x80\x94 "
                          "stopping in-flight recording",
                          "engine stops"));
  app->applicationWillTerminate();
  EXPECT_THAT(journal(), IsEmpty());
}

TEST_F(Termination, whileRecordingLeavesAClosedFileThatRevealSelectsAfterTheNextLaunch) {
  start();
  world.hardware.cycle(fakes::InputCycle({4096}).list());
  choose("Quit Audrel");
  ASSERT_EQ(world.audio.files.size(), 1U);
  EXPECT_FALSE(world.audio.files.front()->isOpen);
  EXPECT_EQ(world.audio.files.front()->writes.size(), 1U);

  relaunch();
  choose("Reveal Last Recording in Finder");
  EXPECT_THAT(
      world.journal.lines("workspace"),
      ElementsAre("workspace.activateFileViewerSelecting(\"" + std::string(firstM4A) + "\")"));
}

TEST_F(Termination, whileAnAlertIsUpClosesTheFileToo) {
  const auto about = statusItem().menu().item("About Audrel…");
  start();
  world.appKit.user.meanwhile = [this] { world.appKit.application.terminate(); };
  fakes::FakeMenuItem::choose(about);
  EXPECT_THAT(world.journal.lines("application.terminate()"), SizeIs(1));
  EXPECT_FALSE(isRecording());
  EXPECT_FALSE(world.audio.files.front()->isOpen);
}

TEST_F(Termination, afterAStopTouchesNothing) {
  start();
  stop();
  journal();
  app->applicationWillTerminate();
  EXPECT_THAT(journal(), IsEmpty());
}

}  // namespace
}  // namespace audrel
