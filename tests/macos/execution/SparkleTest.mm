#include "platform/macos/Updater.h"
#include "tests/macos/execution/MacTest.h"

namespace audrel::macos {
namespace {

class SparkleTest : public MacTest {};

TEST_F(SparkleTest, theUpdaterIsStartedWithoutDelegatesAndAskedWithoutSender) {
  UpdateFramework framework;
  const auto controller = framework.makeStandardUpdaterController(true);
  controller->checkForUpdates();
  framework.makeStandardUpdaterController(false);
  EXPECT_EQ(journal(),
            (Lines{"SPUStandardUpdaterController(startingUpdater true, no delegates)",
                   "SPUStandardUpdaterController.checkForUpdates: without sender",
                   "SPUStandardUpdaterController(startingUpdater false, no delegates)"}));
}

}  // namespace
}  // namespace audrel::macos
