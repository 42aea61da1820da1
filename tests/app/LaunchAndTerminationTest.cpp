#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/RunApplication.h"
#include "tests/app/AppDelegateTest.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* terminating =
    "log io.github.audrel.Audrel [app] info: Terminating — stopping in-flight recording";

TEST(ProcessEntry, keepsTheControllerForTheWholeRunAndNoLonger) {
  fakes::DesktopWorld world;
  bool wasThere = false;
  world.appKit.application.whileRunning = [&] {
    world.appKit.statusItem().open();
    world.appKit.statusItem().choose("Quit Audrel");
    wasThere = true;
  };
  EXPECT_EQ(runApplication(world.platform(), world.desktop()), 0);
  EXPECT_TRUE(wasThere);
  EXPECT_THROW(world.appKit.statusItem(), std::runtime_error);
  EXPECT_EQ(world.appKit.liveMenus(), 0U);
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

TEST(Launch, attachesFirstAnEmptyMenuWhoseDelegateIsTheController) {
  fakes::DesktopWorld world;
  const auto app = AppDelegate::make(world.platform(), world.desktop());
  app->applicationDidFinishLaunching();
  EXPECT_THAT(world.journal.lines("menu 1"),
              ElementsAre("menu 1.autoenablesItems = false", "menu 1.delegate = delegate"));
  EXPECT_THAT(world.journal.lines("statusItem.menu"),
              ElementsAre("statusItem.menu = menu 1", "statusItem.menu = menu 2"));
}

TEST(Launch, withARefusedPermissionIsTheSame) {
  std::vector<std::string> journals[2];
  for (const bool isGranted : {false, true}) {
    fakes::DesktopWorld world;
    world.captureAccess.isGranted = isGranted;
    const auto app = AppDelegate::make(world.platform(), world.desktop());
    app->applicationDidFinishLaunching();
    EXPECT_THAT(world.journal.lines("CG"), SizeIs(1));
    journals[isGranted ? 1 : 0] = world.journal.lines();
    std::erase_if(journals[isGranted ? 1 : 0],
                  [](const std::string& line) { return line.starts_with("CG"); });
  }
  EXPECT_EQ(journals[0], journals[1]);
}

class Launched : public AppDelegateTest {};

TEST_F(Launched, hasNoProcessesBeforeTheMenuOpensAndThoseOfThatMomentAfterwards) {
  EXPECT_THAT(Inspector::processSnapshot(*app), IsEmpty());
  EXPECT_THAT(world.journal.lines("AudioObjectGetPropertyData"), IsEmpty());
  statusItem().open();
  EXPECT_EQ(Inspector::processSnapshot(*app), (std::vector{game(), radio()}));
}

TEST_F(Launched, againHasTheFormatThatWasChosen) {
  choose("WAV (48 kHz / 16-bit)");
  relaunch();
  EXPECT_THAT(marked(), ElementsAre("All System Audio", "WAV (48 kHz / 16-bit)"));
}

class Termination : public AppDelegateTest {};

TEST_F(Termination, whileIdleLogsNothingAndTouchesNothing) {
  app->applicationWillTerminate();
  EXPECT_THAT(journal(), IsEmpty());
  start();
  stop();
  journal();
  app->applicationWillTerminate();
  EXPECT_THAT(journal(), IsEmpty());
}

TEST_F(Termination, whileRecordingLogsOnceAndLeavesAClosedFileThatRevealSelectsAfterwards) {
  start();
  world.hardware.cycle(fakes::InputCycle({4096}).list());
  choose("Quit Audrel");
  app->applicationWillTerminate();
  EXPECT_THAT(world.journal.lines(terminating), SizeIs(1));
  ASSERT_EQ(world.audio.files.size(), 1U);
  EXPECT_FALSE(world.audio.files.front()->isOpen);
  EXPECT_EQ(world.audio.files.front()->writes.size(), 1U);

  relaunch();
  choose("Reveal Last Recording in Finder");
  EXPECT_THAT(revealed(), ElementsAre(firstM4A));
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

}  // namespace
}  // namespace audrel
