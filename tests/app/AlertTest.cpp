#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

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

TEST_F(Alerts, aPermissionThatTheEngineMissesIsAFailureAndNotThePermissionAlert) {
  // Between the controller's look at the permission and the engine's.
  world.journal.whenAdded = [this](const std::string& line) {
    if (line.starts_with("downloadsDirectory")) {
      world.captureAccess.isGranted = false;
    }
  };
  start();
  ASSERT_EQ(world.appKit.alerts.size(), 1U);
  EXPECT_EQ(world.appKit.alerts.front()->messageText, "Recording failed");
  EXPECT_EQ(world.appKit.alerts.front()->informativeText,
            *RecorderError::permissionDenied().errorDescription());
}

}  // namespace
}  // namespace audrel
