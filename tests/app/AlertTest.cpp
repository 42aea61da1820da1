#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/CoreGraphics.h"
#include "tests/app/AppDelegateTest.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

constexpr NS::ModalResponse windowWasClosed = -1000;

class Alerts : public AppDelegateTest {
 protected:
  void about() { choose("About Audrel…"); }

  void refusedStart() {
    world.captureAccess.isGranted = false;
    start();
  }
};

TEST_F(Alerts, whoseWindowIsClosedLeadToNothing) {
  world.appKit.user.answer = windowWasClosed;
  about();
  refusedStart();
  EXPECT_EQ(world.appKit.alerts.size(), 2U);
  EXPECT_THAT(world.journal.lines("urlWithString"), IsEmpty());
}

TEST_F(Alerts, thatAskForThePermissionCareNotWhetherThePaneOpens) {
  world.appKit.workspace.opensURLs = false;
  refusedStart();
  EXPECT_EQ(world.appKit.alerts.size(), 1U);
}

TEST_F(Alerts, ofAFailureHaveOneButtonWhoseAnswerIsIgnored) {
  world.hardware.fail(Call::createProcessTap, -50);
  for (const NS::ModalResponse answer :
       {NS::alertFirstButtonReturn, NS::alertSecondButtonReturn, windowWasClosed}) {
    world.appKit.user.answer = answer;
    start();
    EXPECT_THAT(world.appKit.alerts.back()->buttons, ElementsAre("OK"));
    EXPECT_EQ(journal().back(), "alert.runModal() -> " + std::to_string(answer));
  }
}

TEST_F(Alerts, aboutTheProgramAskForThePermissionAtThatMomentAndNeverRequestIt) {
  about();
  world.captureAccess.isGranted = false;
  about();
  EXPECT_THAT(world.appKit.alerts.at(0)->informativeText, EndsWith("permission: granted"));
  EXPECT_THAT(world.appKit.alerts.at(1)->informativeText, EndsWith("permission: not granted"));
  EXPECT_THAT(world.journal.lines("CG"), ElementsAre("CGPreflightScreenCaptureAccess() -> true",
                                                     "CGPreflightScreenCaptureAccess() -> false"));
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
  EXPECT_EQ(world.appKit.alerts.front()->messageText, "Recording failed");
  EXPECT_EQ(world.appKit.alerts.front()->informativeText,
            *RecorderError::permissionDenied().errorDescription());
}

}  // namespace
}  // namespace audrel
