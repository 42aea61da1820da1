#include <map>
#include <string>

#include "tests/platform/linux/tray/TrayTest.h"

namespace audrel::traytest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::StartsWith;

class ItemOnBus : public TrayTest {
 protected:
  void showRecording() {
    program->item().button()->setImage(
        program->tinted("waveform.circle.fill", program->appKit().systemRedColor()));
  }
};

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
  program->setTitle(" 01:05");
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
  program->setTitle(" 01:05");
  panel.takeSignals();
  program->setTitle("");
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
  showRecording();
  program->setTitle(" 01:05");
  panel.takeSignals();
  showRecording();
  program->setTitle(" 01:05");
  EXPECT_THAT(panel.takeSignals(), IsEmpty());
}

TEST_F(ItemOnBus, withoutIconFilesThePictureItselfIsSent) {
  showRecording();
  EXPECT_THAT(panel.takeSignals(), ElementsAre("NewIcon()"));
  EXPECT_THAT(panel.itemProperty("IconName"), Optional(std::string("''")));
  EXPECT_THAT(panel.itemProperty("IconPixmap"), Optional(StartsWith("[(16, 16, [byte 0x00")));
  program->item().button()->setImage(nullptr);
  EXPECT_THAT(panel.takeSignals(), ElementsAre("NewIcon()"));
  EXPECT_THAT(panel.itemProperty("IconPixmap"), Optional(std::string("@a(iiay) []")));
}

TEST_F(ItemOnBus, isReplacedByAnotherInItsPlace) {
  const std::string first = panel.item();
  program->replaceItem();
  ASSERT_TRUE(panel.runUntil([this] { return panel.registrations().size() == 2; }));
  ASSERT_TRUE(panel.findItem());
  EXPECT_EQ(panel.item(), first);
  EXPECT_TRUE(panel.idOf("Start").has_value());
}

}  // namespace
}  // namespace audrel::traytest
