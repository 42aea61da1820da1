#include <string>

#include "tests/platform/linux/tray/TrayTest.h"

namespace audrel::traytest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ClickOnBus = TrayTest;

TEST_F(ClickOnBus, performsTheActionWithTheItemAsItsSender) {
  EXPECT_EQ(click("some__player ____x"), (Answer{"()", ""}));
  EXPECT_THAT(program->takeJournal(), ElementsAre("perform select: some_player __x"));
}

TEST_F(ClickOnBus, onAnInertItemPerformsNothingNorDoOtherEvents) {
  EXPECT_EQ(click("Reveal").error, "");
  EXPECT_EQ(click("From").error, "");
  EXPECT_EQ(sendEvent(0, "clicked").error, "");
  EXPECT_EQ(sendEvent(idOf("Start"), "hovered").error, "");
  EXPECT_THAT(program->takeJournal(), IsEmpty());
}

TEST_F(ClickOnBus, groupsOfEventsNameTheItemsThatAreUnknown) {
  const std::string start = std::to_string(idOf("Start"));
  EXPECT_EQ(panel
                .callMenu("EventGroup", "([(9999, 'clicked', <0>, uint32 0), (" + start +
                                            ", 'clicked', <0>, 0)],)")
                .value,
            "([9999],)");
  EXPECT_THAT(program->takeJournal(), ElementsAre("perform toggle:"));
}

TEST_F(ClickOnBus, onAMenuLongGoneIsRefused) {
  const int id = idOf("Start");
  program->rebuildMenu();
  program->rebuildMenu();
  EXPECT_EQ(sendEvent(id, "clicked").error, "org.freedesktop.DBus.Error.InvalidArgs");
  EXPECT_THAT(program->takeJournal(), IsEmpty());
}

TEST_F(TrayTest, theItemMayBeReplacedWhileItsOwnMenuOpens) {
  program->onOpen = [this] { program->replaceItem(); };
  // The old item has left the bus, maybe before its answer got out: that one is the panel's loss.
  panel.callMenu("AboutToShow", "(0,)");
  ASSERT_TRUE(panel.runUntil([this] { return panel.registrations().size() == 2; }));
  ASSERT_TRUE(panel.findItem());
  EXPECT_EQ(click("Everything").error, "");
  EXPECT_THAT(program->takeJournal(), ElementsAre("menu will open", "perform select: Everything"));
}

}  // namespace
}  // namespace audrel::traytest
