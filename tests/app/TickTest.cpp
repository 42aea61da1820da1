#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/AppDelegateTest.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* warning =
    "log io.github.audrel.Audrel [app] info: Recording has passed 1 hour — soft warning displayed";

class Tick : public AppDelegateTest {
 protected:
  std::vector<std::string> warnings() const { return world.journal.lines(warning); }
  bool isOrange() { return button().image().find("systemOrangeColor") != std::string::npos; }
};

TEST_F(Tick, isComputedFromTheClockAndNotCounted) {
  start();
  EXPECT_EQ(button().title(), " 00:00");
  tickAt(90);
  EXPECT_EQ(button().title(), " 01:30");
  tickAt(30);
  EXPECT_EQ(button().title(), " 00:30");
}

TEST_F(Tick, justUnderAnHourGivesNoWarning) {
  start();
  tickAt(3599.999);
  tickAt(3599.999);
  EXPECT_FALSE(Inspector::warningFired(*app));
  EXPECT_FALSE(isOrange());
  EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(Tick, theWarningIsLoggedAtAnHourAndShowsFromTheFollowingTickOn) {
  start();
  tickAt(3600);
  EXPECT_TRUE(Inspector::warningFired(*app));
  EXPECT_THAT(warnings(), SizeIs(1));
  EXPECT_FALSE(isOrange());
  tickAt(3601);
  EXPECT_TRUE(isOrange());
  EXPECT_TRUE(isRecording());
  EXPECT_THAT(warnings(), SizeIs(1));
}

TEST_F(Tick, everySecondOfAnHourAndAFewGivesOneWarning) {
  start();
  for (int second = 1; second <= 3605; ++second) {
    tickAt(second);
    ASSERT_EQ(isOrange(), second > 3600) << second;
  }
  EXPECT_THAT(warnings(), SizeIs(1));
}

TEST_F(Tick, theNextRecordingCanWarnAgain) {
  start();
  tickAt(3600);
  stop();
  journal();
  start();
  tickAt(3600 + 3600);
  EXPECT_THAT(warnings(), SizeIs(1));
}

TEST_F(Tick, whenTheClockWasSetBackShowsANegativeTimeAndGoesOn) {
  start();
  tickAt(-5);
  EXPECT_EQ(button().title(), " 00:-5");
  EXPECT_TRUE(isRecording());
}

TEST_F(Tick, isNotRunAfterAStop) {
  start();
  stop();
  journal();
  tickAt(1);
  EXPECT_THAT(journal(), IsEmpty());
}

TEST_F(Tick, hasOneTimerHoweverManyRecordings) {
  for (int round = 0; round < 3; ++round) {
    start();
    EXPECT_EQ(world.runLoop.scheduled(), 1U);
    stop();
    EXPECT_EQ(world.runLoop.scheduled(), 0U);
  }
}

TEST_F(Tick, afterTheEngineWasStoppedByTheTerminationDrawsTheIdleItem) {
  start();
  app->applicationWillTerminate();
  journal();
  tickAt(3600);
  EXPECT_EQ(button().title(), "");
  EXPECT_THAT(warnings(), IsEmpty());
  EXPECT_THAT(world.journal.lines("now()"), IsEmpty());
}

TEST_F(Tick, startAfterSuchAStopReplacesTheTimerThatWasLeft) {
  start();
  app->applicationWillTerminate();
  journal();
  app->toggleRecording(nullptr);
  EXPECT_THAT(world.journal.lines("timer 1"), ElementsAre("timer 1.invalidate()"));
  EXPECT_EQ(world.runLoop.scheduled(), 1U);
}

}  // namespace
}  // namespace audrel
