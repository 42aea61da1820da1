#include "ui/StatusItemController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <limits>
#include <string>

#include "tests/fakes/DesktopWorld.h"

namespace audrel {
namespace {

using State = StatusItemController::State;
using testing::ElementsAre;

TEST(StatusItemState, isIdleOrRecordingWithElapsedAndWarning) {
  EXPECT_EQ(State::idle().asRecording(), nullptr);
  EXPECT_EQ(*State::recording(7.5, true).asRecording(), (State::Recording{7.5, true}));
  EXPECT_EQ(State::idle(), State::idle());
  EXPECT_NE(State::idle(), State::recording(0, false));
  EXPECT_NE(State::recording(1, false), State::recording(1, true));
  EXPECT_NE(State::recording(1, false), State::recording(2, false));
}

TEST(StatusItem, withoutAButtonIsNeverDrawn) {
  fakes::DesktopWorld world;
  world.appKit.statusItemsHaveButtons = false;
  StatusItemController controller(world.appKit);
  controller.apply(State::recording(65, true));
  controller.apply(State::idle());
  EXPECT_THAT(world.journal.lines(), ElementsAre("statusItem(withLength -1)"));
}

TEST(StatusItem, belongsToTheController) {
  fakes::DesktopWorld world;
  {
    StatusItemController controller(world.appKit);
    EXPECT_EQ(&controller.statusItem(), &world.appKit.statusItem());
  }
  EXPECT_THROW(world.appKit.statusItem(), std::runtime_error);
}

/// What docs/transcripts/app-status-item.txt does not show.
class StatusItemControllerTest : public testing::Test {
 protected:
  StatusItemControllerTest() { world.journal.clear(); }

  const fakes::FakeButton& button() const { return world.appKit.statusItem().fakeButton(); }

  fakes::DesktopWorld world;
  StatusItemController controller{world.appKit};
};

TEST_F(StatusItemControllerTest, withoutTheSymbolTheButtonHasNoImageAndStillItsTitle) {
  world.appKit.missingSymbols = {"waveform.circle", "waveform.circle.fill"};
  controller.apply(State::recording(65, false));
  EXPECT_THAT(world.journal.lines(),
              ElementsAre("imageWithSystemSymbolName(\"waveform.circle.fill\") -> nil",
                          "button.image = nil", "button.title = \" 01:05\""));
  controller.apply(State::idle());
  EXPECT_EQ(button().image(), "no image");
}

TEST_F(StatusItemControllerTest, withoutTheConfigurationTheButtonHasNoImageEither) {
  world.appKit.symbolsHaveConfigurations = false;
  controller.apply(State::recording(65, false));
  EXPECT_THAT(world.journal.lines(),
              ElementsAre("imageWithSystemSymbolName(\"waveform.circle.fill\") -> image 3",
                          "image 3.withSymbolConfiguration(pointSize 14, weight 0) -> nil",
                          "button.image = nil", "button.title = \" 01:05\""));
  controller.apply(State::idle());
  EXPECT_EQ(button().image(), "no image");
}

using StatusItemDeathTest = StatusItemControllerTest;

TEST_F(StatusItemDeathTest, elapsedThatIsNoNumberEndsTheProcess) {
  EXPECT_EXIT(controller.apply(State::recording(std::numeric_limits<double>::quiet_NaN(), false)),
              testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace audrel
