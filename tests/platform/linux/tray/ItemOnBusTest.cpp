#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "tests/platform/linux/tray/TrayTest.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::traytest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::StartsWith;

using ItemOnBus = TrayTest;

TEST_F(ItemOnBus, offersEveryPropertyWithItsType) {
  EXPECT_EQ(panel.properties("/StatusNotifierItem", "org.kde.StatusNotifierItem"),
            (std::map<std::string, std::string>{
                {"Category", "'ApplicationStatus'"},
                {"Id", "'io.github.audrel.Audrel'"},
                {"Title", "'Audrel'"},
                {"Status", "'Active'"},
                {"WindowId", "0"},
                {"IconThemePath", "''"},
                {"IconName", "''"},
                {"IconPixmap", "@a(iiay) []"},
                {"OverlayIconName", "''"},
                {"OverlayIconPixmap", "@a(iiay) []"},
                {"AttentionIconName", "''"},
                {"AttentionIconPixmap", "@a(iiay) []"},
                {"AttentionMovieName", "''"},
                {"ToolTip", "('', @a(iiay) [], 'Audrel', '')"},
                {"ItemIsMenu", "true"},
                {"Menu", "objectpath '/MenuBar'"},
                {"XAyatanaOrderingIndex", "uint32 0"},
            }));
}

TEST_F(ItemOnBus, menuOffersEveryPropertyWithItsType) {
  EXPECT_EQ(panel.properties("/MenuBar", "com.canonical.dbusmenu"),
            (std::map<std::string, std::string>{
                {"Version", "uint32 3"},
                {"TextDirection", "'ltr'"},
                {"Status", "'normal'"},
                {"IconThemePath", "@as []"},
            }));
}

TEST_F(ItemOnBus, registersUnderItsUniqueName) {
  ASSERT_EQ(panel.registrations().size(), 1U);
  EXPECT_THAT(panel.registrations().front(), StartsWith(":1."));
}

TEST_F(ItemOnBus, isNotActivatedSoThatALeftClickOpensTheMenu) {
  const Answer answer =
      panel.call("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate", "(0, 0)");
  EXPECT_EQ(answer.error, "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(ItemOnBus, titleIsLabelAndToolTip) {
  panel.takeSignals();
  ASSERT_TRUE(program.command("title  01:05"));
  EXPECT_THAT(panel.itemProperty("XAyatanaLabel"), Optional(std::string("' 01:05'")));
  EXPECT_THAT(panel.itemProperty("XAyatanaLabelGuide"), Optional(std::string("' 00:00'")));
  EXPECT_THAT(panel.itemProperty("ToolTip"),
              Optional(std::string("('', @a(iiay) [], 'Audrel 01:05', '')")));
  EXPECT_THAT(panel.takeSignals(),
              ElementsAre("XAyatanaNewLabel(' 01:05', ' 00:00')",
                          "PropertiesChanged('org.kde.StatusNotifierItem', {'XAyatanaLabel': "
                          "<' 01:05'>, 'XAyatanaLabelGuide': <' 00:00'>}, @as [])",
                          "NewToolTip()"));
}

TEST_F(ItemOnBus, emptyTitleLeavesNoLabel) {
  ASSERT_TRUE(program.command("title  01:05"));
  panel.takeSignals();
  ASSERT_TRUE(program.command("title "));
  EXPECT_EQ(panel.itemProperty("XAyatanaLabel"), std::nullopt);
  EXPECT_EQ(panel.itemProperty("XAyatanaLabelGuide"), std::nullopt);
  EXPECT_THAT(panel.itemProperty("ToolTip"),
              Optional(std::string("('', @a(iiay) [], 'Audrel', '')")));
  EXPECT_THAT(panel.takeSignals(),
              ElementsAre("XAyatanaNewLabel('', '')",
                          "PropertiesChanged('org.kde.StatusNotifierItem', @a{sv} {}, "
                          "['XAyatanaLabel', 'XAyatanaLabelGuide'])",
                          "NewToolTip()"));
}

TEST_F(ItemOnBus, tellsNothingWhenNothingChanged) {
  ASSERT_TRUE(program.command("image recording"));
  ASSERT_TRUE(program.command("title  01:05"));
  panel.takeSignals();
  ASSERT_TRUE(program.command("image recording"));
  ASSERT_TRUE(program.command("title  01:05"));
  EXPECT_THAT(panel.takeSignals(), IsEmpty());
}

TEST_F(ItemOnBus, withoutIconFilesThePictureItselfIsSent) {
  ASSERT_TRUE(program.command("image recording"));
  EXPECT_THAT(panel.takeSignals(), ElementsAre("NewIcon()"));
  EXPECT_THAT(panel.itemProperty("IconName"), Optional(std::string("''")));
  EXPECT_THAT(panel.itemProperty("IconPixmap"), Optional(StartsWith("[(16, 16, [byte 0x00")));
  ASSERT_TRUE(program.command("image none"));
  EXPECT_THAT(panel.takeSignals(), ElementsAre("NewIcon()"));
  EXPECT_THAT(panel.itemProperty("IconPixmap"), Optional(std::string("@a(iiay) []")));
}

TEST_F(ItemOnBus, isReplacedByAnotherInItsPlace) {
  const std::string first = panel.item();
  ASSERT_TRUE(program.command("replace-item"));
  ASSERT_TRUE(panel.runUntil([this] { return panel.registrations().size() == 2; }));
  ASSERT_TRUE(panel.findItem());
  EXPECT_EQ(panel.item(), first);
  EXPECT_TRUE(panel.idOf("Start").has_value());
}

TEST(IconOnBus, iconsAreSentByNameWhereTheirFilesAre) {
  const support::TemporaryFolder icons;
  const auto folder = icons.path() / "hicolor" / "scalable" / "status";
  std::error_code error;
  ASSERT_TRUE(std::filesystem::create_directories(folder, error));
  for (const char* name : {"-idle-symbolic", "-recording", "-warning"}) {
    std::ofstream(folder / (std::string("io.github.audrel.Audrel") + name + ".svg")) << "<svg/>";
  }
  const PrivateBus bus;
  ASSERT_TRUE(bus.isRunning());
  Panel panel(bus.address());
  panel.startWatcher();
  TrayProgram program(bus.address(), icons.path());
  ASSERT_TRUE(panel.findItem());
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"idle", "'io.github.audrel.Audrel-idle-symbolic'"},
      {"recording", "'io.github.audrel.Audrel-recording'"},
      {"warning", "'io.github.audrel.Audrel-warning'"},
  };
  for (const auto& [image, name] : expected) {
    ASSERT_TRUE(program.command("image " + image));
    EXPECT_THAT(panel.takeSignals(), ElementsAre("NewIcon()"));
    EXPECT_THAT(panel.itemProperty("IconName"), Optional(name));
    EXPECT_THAT(panel.itemProperty("IconPixmap"), Optional(std::string("@a(iiay) []")));
  }
  EXPECT_THAT(panel.itemProperty("IconThemePath"), Optional("'" + icons.path().string() + "'"));
}

}  // namespace
}  // namespace audrel::traytest
