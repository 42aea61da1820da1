// Who keeps whom. The address sanitizer turns each mistake into a failure: the fakes hold weakly
// what platforms hold weakly, and keep alive what a call needs for the length of the call alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "tests/app/AppDelegateTest.h"

namespace audrel {
namespace {

using testing::ElementsAre;

class Ownership : public AppDelegateTest {
 protected:
  /// Closed submenus belong to a menu: the idle menu has two.
  static constexpr std::size_t menusWhenIdle = 3;
};

TEST_F(Ownership, theControllerIsKeptByWhoMadeItAlone) {
  EXPECT_EQ(app.use_count(), 1);
  start();
  EXPECT_EQ(app.use_count(), 1);
}

TEST_F(Ownership, aMenuThatIsReplacedInsideItsOwnWillOpenIsGoneAfterTheCall) {
  const auto opening = statusItem().weakMenu();
  statusItem().open();
  EXPECT_TRUE(opening.expired());
  EXPECT_EQ(world.appKit.liveMenus(), menusWhenIdle);
}

TEST_F(Ownership, anItemWhoseActionRebuildsTheMenuIsGoneAfterTheCall) {
  statusItem().open();
  for (const char* title : {"Radio", "All System Audio", "Refresh List", "WAV (48 kHz / 16-bit)",
                            "Start Recording", "Stop Recording"}) {
    const auto menu = statusItem().weakMenu();
    const std::weak_ptr<fakes::FakeMenuItem> item = statusItem().menu().item(title);
    choose(title);
    EXPECT_TRUE(menu.expired()) << title;
    EXPECT_TRUE(item.expired()) << title;
  }
  EXPECT_EQ(world.appKit.liveMenus(), menusWhenIdle);
}

TEST_F(Ownership, anItemOfAMenuThatWasReplacedStillActs) {
  statusItem().open();
  const auto item = statusItem().menu().item("Radio");
  statusItem().open();
  fakes::FakeMenuItem::choose(item);
  EXPECT_EQ(Inspector::selectedSource(*app), radio());
}

TEST_F(Ownership, theSelectedSourceOutlivesItsItem) {
  statusItem().open();
  choose("Radio");
  world.hardware.processObjects.clear();
  statusItem().open();
  EXPECT_EQ(Inspector::selectedSource(*app), radio());
}

TEST_F(Ownership, aTimerThatFiresAfterTheControllerIsGoneDoesNothing) {
  start();
  app = nullptr;
  world.journal.clear();
  world.runLoop.fire();
  EXPECT_THAT(world.journal.lines(), ElementsAre("timer 1 fires"));
}

TEST_F(Ownership, anItemThatIsChosenAfterTheControllerIsGoneHasNoTarget) {
  const auto item = statusItem().menu().item("Start Recording");
  app = nullptr;
  EXPECT_THROW(fakes::FakeMenuItem::choose(item), std::runtime_error);
}

TEST_F(Ownership, theStatusItemAndItsMenuGoWithTheController) {
  statusItem().open();
  app = nullptr;
  EXPECT_THROW(statusItem(), std::runtime_error);
  EXPECT_EQ(world.appKit.liveMenus(), 0U);
}

TEST_F(Ownership, aTimerThatStopsTheRecordingInsideAnAlertIsSafe) {
  const auto about = statusItem().menu().item("About Audrel\xE2\x80\xA6");
  start();
  world.appKit.user.meanwhile = [this] {
    tickAt(1);
    stop();
    statusItem().open();
  };
  fakes::FakeMenuItem::choose(about);
  EXPECT_FALSE(isRecording());
  EXPECT_EQ(world.runLoop.scheduled(), 0U);
}

TEST_F(Ownership, twoThousandMenusAndTwoHundredRecordingsLeaveOneMenuAndNoTimer) {
  for (int round = 0; round < 200; ++round) {
    for (int opening = 0; opening < 10; ++opening) {
      statusItem().open();
    }
    start();
    stop();
    world.journal.clear();
  }
  EXPECT_EQ(world.appKit.liveMenus(), menusWhenIdle);
  EXPECT_EQ(world.runLoop.scheduled(), 0U);
  EXPECT_EQ(app.use_count(), 1);
}

}  // namespace
}  // namespace audrel
