#include <gmock/gmock.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/platform/linux/tray/TrayTest.h"

namespace audrel::traytest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using ClickOnBus = TrayTest;

TEST_F(ClickOnBus, performsTheActionWithTheItemAsItsSender) {
  EXPECT_EQ(click("some__player ____x"), (Answer{"()", ""}));
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), ElementsAre("perform select: some_player __x"));
}

TEST_F(ClickOnBus, onAnItemThatIsDisabledOrHasNoActionDoesNothing) {
  EXPECT_EQ(click("Reveal").error, "");
  EXPECT_EQ(click("From").error, "");
  EXPECT_EQ(sendEvent(0, "clicked").error, "");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), IsEmpty());
}

TEST_F(ClickOnBus, isTheOnlyEventThatPerformsAnAction) {
  EXPECT_EQ(sendEvent(idOf("Start"), "hovered").error, "");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), IsEmpty());
}

TEST_F(ClickOnBus, groupsOfEventsNameTheItemsThatAreUnknown) {
  const std::string start = std::to_string(idOf("Start"));
  EXPECT_EQ(panel
                .callMenu("EventGroup", "([(9999, 'clicked', <0>, uint32 0), (" + start +
                                            ", 'clicked', <0>, 0)],)")
                .value,
            "([9999],)");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), ElementsAre("perform toggle:"));
}

TEST_F(ClickOnBus, onTheMenuBeforeThisOneStillCounts) {
  const int id = idOf("some__player ____x");
  ASSERT_TRUE(program.command("rebuild"));
  EXPECT_EQ(sendEvent(id, "clicked").error, "");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), ElementsAre("perform select: some_player __x"));
}

TEST_F(ClickOnBus, onAnItemThatTheMenuHasNoMoreStillCounts) {
  const int id = idOf("Everything");
  ASSERT_TRUE(program.command("toggle"));
  EXPECT_EQ(sendEvent(id, "clicked").error, "");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), ElementsAre("perform select: Everything"));
}

TEST_F(ClickOnBus, onAMenuLongGoneIsRefused) {
  const int id = idOf("Start");
  ASSERT_TRUE(program.command("rebuild"));
  ASSERT_TRUE(program.command("rebuild"));
  EXPECT_EQ(sendEvent(id, "clicked").error, "org.freedesktop.DBus.Error.InvalidArgs");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), IsEmpty());
}

TEST_F(ClickOnBus, onStartDoesNotStopWhatRunsMeanwhile) {
  const int id = idOf("Start");
  ASSERT_TRUE(program.command("toggle"));
  EXPECT_EQ(sendEvent(id, "clicked").error, "");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), IsEmpty());
  EXPECT_THAT(panel.menuText(), HasSubstr("'Stop'"));
}

TEST_F(ClickOnBus, twiceOnStartStartsOnce) {
  const std::string start = std::to_string(idOf("Start"));
  const std::string event = "(" + start + ", 'clicked', <0>, uint32 0)";
  EXPECT_EQ(panel.callMenu("EventGroup", "([" + event + ", " + event + "],)").value, "(@ai [],)");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), ElementsAre("perform toggle:"));
  EXPECT_THAT(panel.menuText(), HasSubstr("'Stop'"));
}

TEST_F(ClickOnBus, aThousandOfThemAtOnceAreOneForEachItem) {
  const std::string first = std::to_string(idOf("Everything"));
  const std::string second = std::to_string(idOf("some__player ____x"));
  std::string events;
  for (int i = 0; i < 500; ++i) {
    events += "(" + first + ", 'clicked', <0>, uint32 0), (" + second + ", 'clicked', <0>, 0), ";
  }
  EXPECT_EQ(panel.callMenu("EventGroup", "([" + events.substr(0, events.size() - 2) + "],)").value,
            "(@ai [],)");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(),
              ElementsAre("perform select: Everything", "perform select: some_player __x"));
}

TEST_F(ClickOnBus, isAnsweredBeforeItsActionRuns) {
  EXPECT_EQ(click("Ask").error, "");
  ASSERT_TRUE(program.waitFor("asking"));
  ASSERT_TRUE(program.command("answer"));
  ASSERT_TRUE(program.waitFor("answered"));
}

class AlertOnBus : public TrayTest {
 protected:
  void SetUp() override {
    TrayTest::SetUp();
    startId = idOf("Start");
    ASSERT_EQ(click("Ask").error, "");
    ASSERT_TRUE(program.waitFor("asking"));
    program.takeJournal();
  }

  int startId = 0;
};

TEST_F(AlertOnBus, theItemAnswersAndTimersGoOn) {
  EXPECT_TRUE(panel.itemProperty("ToolTip").has_value());
  ASSERT_TRUE(program.command("title  00:07"));
  EXPECT_EQ(panel.itemProperty("XAyatanaLabel"), "' 00:07'");
  ASSERT_TRUE(program.command("tick"));
  ASSERT_TRUE(program.waitFor("tick"));
  ASSERT_TRUE(program.command("answer"));
  EXPECT_TRUE(program.waitFor("answered"));
}

TEST_F(AlertOnBus, onlyQuitIsEnabledWhenTheMenuOpens) {
  EXPECT_EQ(panel.callMenu("AboutToShow", "(0,)").value, "(true,)");
  EXPECT_THAT(panel.menuText(), HasSubstr("'Start' enabled=false"));
  EXPECT_THAT(panel.menuText(), HasSubstr("'Ask' enabled=false"));
  EXPECT_THAT(panel.menuText(), HasSubstr("'Quit' shortcut"));
  ASSERT_TRUE(program.command("answer"));
  ASSERT_TRUE(program.waitFor("answered"));
  EXPECT_EQ(panel.callMenu("AboutToShow", "(0,)").value, "(true,)");
  EXPECT_THAT(panel.menuText(), Not(HasSubstr("'Ask' enabled=false")));
}

TEST_F(AlertOnBus, commandsOtherThanQuitAreIgnored) {
  EXPECT_EQ(sendEvent(startId, "clicked").error, "");
  EXPECT_EQ(click("Ask").error, "");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), IsEmpty());
  ASSERT_TRUE(program.command("answer"));
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), ElementsAre("answered"));
}

TEST_F(AlertOnBus, quitCallsTheAlertOffAndEndsTheProgram) {
  click("Quit");  // the program may be gone before its answer is out
  ASSERT_TRUE(program.waitFor("ended"));
  EXPECT_THAT(program.takeJournal(),
              ElementsAre("perform quit:", "will terminate", "called off", "ended"));
  EXPECT_EQ(program.process().waitForEnd(), 0);
}

TEST_F(TrayTest, quitEndsTheProgramThroughItsDelegate) {
  click("Quit");  // the program may be gone before its answer is out
  ASSERT_TRUE(program.waitFor("ended"));
  EXPECT_THAT(program.takeJournal(), ElementsAre("perform quit:", "will terminate", "ended"));
  EXPECT_EQ(program.process().waitForEnd(), 0);
}

TEST_F(TrayTest, theItemMayBeReplacedWhileItsOwnMenuOpens) {
  ASSERT_TRUE(program.command("replace-item-on-open"));
  // The old item has left the bus, maybe before its answer got out: that one is the panel's loss.
  panel.callMenu("AboutToShow", "(0,)");
  ASSERT_TRUE(panel.runUntil([this] { return panel.registrations().size() == 2; }));
  ASSERT_TRUE(panel.findItem());
  EXPECT_EQ(click("Everything").error, "");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), ElementsAre("menu will open", "perform select: Everything"));
}

TEST_F(TrayTest, twoThousandRebuildsLeaveNothingBehind) {
  const auto open = [this](int times) {
    for (int i = 0; i < times; ++i) {
      if (i % 100 == 0) {
        ASSERT_TRUE(program.settle());
        program.takeJournal();
        ASSERT_FALSE(panel.layout().children.empty());
      }
      ASSERT_EQ(panel.callMenu("AboutToShow", "(0,)").value, "(true,)");
    }
  };
  const auto allocated = [this] {
    EXPECT_TRUE(program.command("allocated"));
    const std::string line = program.takeJournal().back();
    return std::strtol(line.substr(line.find(' ')).c_str(), nullptr, 10);
  };
  open(100);
  const long before = allocated();
  ASSERT_GT(before, 10'000);
  open(2'000);
  // Four bytes kept of each rebuild would be seen; they are equal to within some hundred.
  EXPECT_LT(allocated() - before, 8'000);
}

}  // namespace
}  // namespace audrel::traytest
