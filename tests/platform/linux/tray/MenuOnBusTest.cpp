#include <string>

#include "tests/platform/linux/tray/TrayTest.h"

namespace audrel::traytest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* invalid = "org.freedesktop.DBus.Error.InvalidArgs";

using MenuOnBus = TrayTest;

TEST_F(MenuOnBus, isSentWholeWithUnderscoresDoubled) {
  EXPECT_EQ(panel.menuText(),
            "'Start'\n"
            " type='separator'\n"
            "'From' children-display='submenu'\n"
            "  'Everything' toggle-state=1 toggle-type='checkmark'\n"
            "  'some__player ____x' toggle-state=0 toggle-type='checkmark'\n"
            "'Reveal' enabled=false\n"
            "'Quit'\n");
  EXPECT_EQ(panel.layout().properties.at("children-display"), "'submenu'");
}

TEST_F(MenuOnBus, isSentAsDeepAndAsDetailedAsAsked) {
  EXPECT_THAT(panel.callMenu("GetLayout", "(0, 0, ['label'])").value,
              HasSubstr("(0, @a{sv} {}, @av [])"));
  const Answer oneLevel = panel.callMenu("GetLayout", "(0, 1, ['label'])");
  EXPECT_THAT(oneLevel.value, HasSubstr("{'label': <'From'>}, @av [])"));
  EXPECT_THAT(oneLevel.value, Not(HasSubstr("Everything")));
  EXPECT_THAT(oneLevel.value, Not(HasSubstr("enabled")));
  const std::string submenu = std::to_string(idOf("From"));
  EXPECT_THAT(panel.callMenu("GetLayout", "(" + submenu + ", -1, ['toggle-state'])").value,
              HasSubstr("(" + submenu + ", @a{sv} {}, [<("));
}

TEST_F(MenuOnBus, itemsThatAreNotThereAreRefused) {
  EXPECT_EQ(panel.callMenu("GetLayout", "(9999, -1, @as [])").error, invalid);
  EXPECT_EQ(panel.callMenu("GetProperty", "(9999, 'label')").error, invalid);
  EXPECT_EQ(panel.callMenu("GetProperty", "(0, 'no-such-property')").error, invalid);
  EXPECT_EQ(sendEvent(9999, "clicked").error, invalid);
  EXPECT_EQ(sendEvent(-1, "hovered").error, invalid);
}

TEST_F(MenuOnBus, singlePropertiesComeWithTheProtocolsDefaults) {
  const auto property = [this](const std::string& label, const std::string& name) {
    const std::string id = std::to_string(idOf(label));
    return panel.callMenu("GetProperty", "(" + id + ", '" + name + "')").value;
  };
  EXPECT_EQ(property("some__player ____x", "label"), "(<'some__player ____x'>,)");
  EXPECT_EQ(property("Everything", "toggle-state"), "(<1>,)");
  EXPECT_EQ(property("Reveal", "enabled"), "(<false>,)");
  EXPECT_EQ(property("Quit", "enabled"), "(<true>,)");
  EXPECT_EQ(property("Quit", "visible"), "(<true>,)");
  EXPECT_EQ(property("Quit", "type"), "(<'standard'>,)");
  EXPECT_EQ(panel.callMenu("GetProperty", "(0, 'label')").value, "(<''>,)");
}

TEST_F(MenuOnBus, groupsOfPropertiesLeaveOutUnknownItems) {
  const std::string id = std::to_string(idOf("Reveal"));
  EXPECT_EQ(panel.callMenu("GetGroupProperties", "([" + id + ", 9999], ['enabled'])").value,
            "([(" + id + ", {'enabled': <false>})],)");
  const std::string all = panel.callMenu("GetGroupProperties", "(@ai [], @as ['label'])").value;
  for (const char* label : {"'Start'", "'From'", "'Everything'", "'Quit'"}) {
    EXPECT_THAT(all, HasSubstr(label));
  }
}

TEST_F(MenuOnBus, aboutToShowTellsTheProgramAndAnswersTrueAfterTheRebuild) {
  const std::string before = panel.callMenu("GetLayout", "(0, -1, ['label'])").value;
  EXPECT_EQ(panel.callMenu("AboutToShow", "(0,)").value, "(true,)");
  EXPECT_NE(panel.callMenu("GetLayout", "(0, -1, ['label'])").value, before);
  EXPECT_THAT(program->takeJournal(), ElementsAre("menu will open"));
}

TEST_F(MenuOnBus, announcementAndReportOfOneOpeningTellTheProgramOnce) {
  panel.callMenu("AboutToShow", "(0,)");
  sendEvent(0, "opened");
  sendEvent(0, "closed");
  sendEvent(0, "opened");
  panel.callMenu("AboutToShow", "(0,)");
  EXPECT_THAT(program->takeJournal(), ElementsAre("menu will open", "menu will open"));
}

TEST_F(MenuOnBus, panelsThatOnlyReportAnOpeningAreToldToReadTheMenuAgain) {
  panel.takeSignals();
  EXPECT_EQ(sendEvent(0, "opened").error, "");
  EXPECT_THAT(panel.takeSignals(), ElementsAre("LayoutUpdated(uint32 3, 0)"));
  EXPECT_THAT(program->takeJournal(), ElementsAre("menu will open"));
}

TEST_F(MenuOnBus, submenusComeWithTheirMenu) {
  const std::string id = std::to_string(idOf("From"));
  EXPECT_EQ(panel.callMenu("AboutToShow", "(" + id + ",)").value, "(false,)");
  EXPECT_EQ(sendEvent(idOf("From"), "opened").error, "");
  EXPECT_THAT(program->takeJournal(), IsEmpty());
}

TEST_F(MenuOnBus, aPanelThatReadsLevelByLevelIsToldOfTheSubmenusOnceForEachTree) {
  const std::string told = "LayoutUpdated(uint32 2, " + std::to_string(idOf("From")) + ")";
  panel.takeSignals();
  panel.callMenu("GetLayout", "(0, 1, ['label'])");
  EXPECT_THAT(panel.takeSignals(), ElementsAre(told));
  panel.callMenu("GetLayout", "(0, 1, ['label'])");
  EXPECT_THAT(panel.takeSignals(), IsEmpty());
  panel.callMenu("AboutToShow", "(0,)");
  panel.takeSignals();
  panel.callMenu("GetLayout", "(0, 1, ['label'])");
  EXPECT_THAT(panel.takeSignals(),
              ElementsAre("LayoutUpdated(uint32 3, " + std::to_string(idOf("From")) + ")"));
}

TEST_F(MenuOnBus, aPanelThatReadsTheWholeMenuIsToldNothingOfSubmenus) {
  panel.takeSignals();
  panel.callMenu("GetLayout", "(0, -1, ['label'])");
  panel.callMenu("GetLayout", "(" + std::to_string(idOf("From")) + ", 1, ['label'])");
  EXPECT_THAT(panel.takeSignals(), IsEmpty());
}

TEST_F(MenuOnBus, groupsOfAnnouncementsTellWhichChangedAndWhichAreUnknown) {
  const std::string id = std::to_string(idOf("From"));
  EXPECT_EQ(panel.callMenu("AboutToShowGroup", "([9999, " + id + ", 0],)").value, "([0], [9999])");
  EXPECT_THAT(program->takeJournal(), ElementsAre("menu will open"));
}

/// `count` times `text`, as an array.
std::string arrayOf(const std::string& text, int count) {
  std::string array = "[";
  for (int i = 0; i < count; ++i) {
    array.append(i == 0 ? "" : ", ").append(text);
  }
  return array + "]";
}

/// As many ids that no item has.
std::string unknownIds(int count) {
  std::string array = "[";
  for (int i = 0; i < count; ++i) {
    array.append(i == 0 ? "" : ", ").append(std::to_string(1'000'000 + i));
  }
  return array + "]";
}

TEST_F(MenuOnBus, groupsServeEachItemOnceHoweverOftenTheyNameIt) {
  EXPECT_EQ(panel.callMenu("AboutToShowGroup", "(" + arrayOf("0", 60'000) + ",)").value,
            "([0], @ai [])");
  EXPECT_EQ(panel.callMenu("AboutToShowGroup", "([9999, 9999],)").value, "(@ai [], [9999])");
  EXPECT_THAT(program->takeJournal(), ElementsAre("menu will open"));
  const std::string id = std::to_string(idOf("Reveal"));
  const std::string many = "(" + arrayOf(id, 100'000) + ", ['enabled'])";
  EXPECT_TRUE(panel.callMenu("GetGroupProperties", many).value ==
              "([(" + id + ", {'enabled': <false>})],)");
}

TEST_F(MenuOnBus, groupsOfReportsTellTheProgramOnceThatItOpens) {
  const std::string reports = arrayOf("(0, 'opened', <0>, uint32 0)", 1'000);
  EXPECT_EQ(panel.callMenu("EventGroup", "(" + reports + ",)").value, "(@ai [],)");
  EXPECT_THAT(program->takeJournal(), ElementsAre("menu will open"));
}

TEST_F(MenuOnBus, groupsOfMoreItemsThanAnyMenuHasAreRefused) {
  EXPECT_EQ(panel.callMenu("AboutToShowGroup", "(" + unknownIds(10'000) + ",)").error, "");
  EXPECT_EQ(panel.callMenu("AboutToShowGroup", "(" + unknownIds(10'001) + ",)").error, invalid);
  EXPECT_EQ(panel.callMenu("GetGroupProperties", "(" + unknownIds(10'001) + ", @as [])").error,
            invalid);
  EXPECT_EQ(
      panel.callMenu("EventGroup", "(" + arrayOf("(9999, 'hovered', <0>, uint32 0)", 10'001) + ",)")
          .error,
      invalid);
}

TEST_F(MenuOnBus, aMenuThatIsKeptWhenItOpensIsReadAgain) {
  program->onOpen = [] {};
  const std::string menu = panel.menuText();
  const int id = idOf("Start");
  EXPECT_EQ(panel.callMenu("AboutToShow", "(0,)").value, "(true,)");
  EXPECT_EQ(panel.menuText(), menu);
  EXPECT_NE(idOf("Start"), id);
}

TEST_F(MenuOnBus, everyMenuHasIdsOfItsOwnAndIsAnnounced) {
  const int id = idOf("Quit");
  panel.takeSignals();
  program->rebuildMenu();
  EXPECT_THAT(panel.takeSignals(), ElementsAre("LayoutUpdated(uint32 3, 0)"));
  EXPECT_GT(idOf("Start"), id);
  EXPECT_THAT(panel.callMenu("GetLayout", "(0, 0, @as [])").value, HasSubstr("(uint32 3, "));
}

TEST_F(MenuOnBus, withoutAMenuItIsEmpty) {
  program->item().setMenu(nullptr);
  EXPECT_EQ(panel.menuText(), "");
  EXPECT_EQ(panel.callMenu("AboutToShow", "(0,)").value, "(false,)");
}

}  // namespace
}  // namespace audrel::traytest
