#include "ui/StatusItemController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <limits>
#include <string>
#include <vector>

#include "tests/fakes/DesktopWorld.h"

namespace audrel {
namespace {

using State = StatusItemController::State;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string idleImage = "symbol \"waveform.circle\", pointSize 14, weight 0; template";

std::string recordingImage(const std::string& color) {
  return "picture of 18 x 16; draws [symbol \"waveform.circle.fill\", pointSize 14, weight 0; "
         "no template] in (0, 0, 18 x 16); fills (0, 0, 18 x 16) with operation 5 in " +
         color + "; no template";
}

class StatusItemControllerTest : public testing::Test {
 protected:
  StatusItemControllerTest() { world.journal.clear(); }

  const fakes::FakeButton& button() const { return world.appKit.statusItem().fakeButton(); }

  fakes::DesktopWorld world;
  StatusItemController controller{world.appKit};
};

TEST(StatusItemState, isIdleOrRecordingWithElapsedAndWarning) {
  EXPECT_EQ(State::idle().asRecording(), nullptr);
  EXPECT_EQ(*State::recording(7.5, true).asRecording(), (State::Recording{7.5, true}));
  EXPECT_EQ(State::idle(), State::idle());
  EXPECT_NE(State::idle(), State::recording(0, false));
  EXPECT_NE(State::recording(1, false), State::recording(1, true));
  EXPECT_NE(State::recording(1, false), State::recording(2, false));
}

TEST(StatusItem, isMadeOnceAsWideAsItsContentAndLooksIdle) {
  fakes::DesktopWorld world;
  const StatusItemController controller(world.appKit);
  EXPECT_THAT(
      world.journal.lines(),
      ElementsAre(
          "statusItem(withLength -1)", "button.font = monospacedDigitSystemFont(size 12, weight 0)",
          "button.imagePosition = 2", "imageWithSystemSymbolName(\"waveform.circle\") -> image 1",
          "image 1.withSymbolConfiguration(pointSize 14, weight 0) -> image 2",
          "image 2.template = true", "button.image = image 2", "button.title = \"\""));
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

TEST_F(StatusItemControllerTest, recordingIsTheWholeSequenceOfTinting) {
  controller.apply(State::recording(65, false));
  EXPECT_THAT(
      world.journal.lines(),
      ElementsAre("imageWithSystemSymbolName(\"waveform.circle.fill\") -> image 3",
                  "image 3.withSymbolConfiguration(pointSize 14, weight 0) -> image 4",
                  "image 4.template = false", "NSImage(18 x 16) -> image 5", "image 5.lockFocus()",
                  "systemRedColor.set()", "image 4.drawInRect(0, 0, 18 x 16)",
                  "fillRect(0, 0, 18 x 16) with operation 5", "image 5.unlockFocus()",
                  "button.image = image 5", "button.title = \" 01:05\""));
}

TEST_F(StatusItemControllerTest, recordingAt65SecondsIsTheRedSymbolAndASpaceBeforeTheTime) {
  controller.apply(State::recording(65, false));
  EXPECT_EQ(button().image(), recordingImage("systemRedColor"));
  EXPECT_EQ(button().title(), " 01:05");
}

TEST_F(StatusItemControllerTest, warningIsOrangeAndTheTimeTheSame) {
  controller.apply(State::recording(65, true));
  EXPECT_EQ(button().image(), recordingImage("systemOrangeColor"));
  EXPECT_EQ(button().title(), " 01:05");
}

TEST_F(StatusItemControllerTest, colourGoesByTheWarningAloneAndNotByTheTime) {
  controller.apply(State::recording(3600, false));
  EXPECT_EQ(button().image(), recordingImage("systemRedColor"));
  EXPECT_EQ(button().title(), " 1:00:00");
}

TEST_F(StatusItemControllerTest, returningToIdleClearsTheTitleAndRestoresTheTemplateSymbol) {
  EXPECT_EQ(button().image(), idleImage);
  controller.apply(State::recording(65, false));
  controller.apply(State::idle());
  EXPECT_EQ(button().image(), idleImage);
  EXPECT_EQ(button().title(), "");
}

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

TEST_F(StatusItemControllerTest, negativeElapsedIsDrawnWithItsSign) {
  controller.apply(State::recording(-5, false));
  EXPECT_EQ(button().title(), " 00:-5");
}

using StatusItemDeathTest = StatusItemControllerTest;

TEST_F(StatusItemDeathTest, elapsedThatIsNoNumberEndsTheProcess) {
  EXPECT_EXIT(controller.apply(State::recording(std::numeric_limits<double>::quiet_NaN(), false)),
              testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace audrel
