#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "tests/platform/linux/tray/TrayTest.h"

namespace audrel::traytest {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
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
                {"IconAccessibleDesc", "'Audrel'"},
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
  EXPECT_THAT(panel.itemProperty("Title"), Optional(std::string("'Recording, 01:05'")));
  EXPECT_THAT(panel.itemProperty("ToolTip"),
              Optional(std::string("('', @a(iiay) [], 'Recording, 01:05', '')")));
  EXPECT_THAT(panel.takeSignals(),
              ElementsAre("XAyatanaNewLabel(' 01:05', ' 00:00')",
                          "PropertiesChanged('org.kde.StatusNotifierItem', {'XAyatanaLabel': "
                          "<' 01:05'>, 'XAyatanaLabelGuide': <' 00:00'>}, @as [])",
                          "NewTitle()", "NewToolTip()"));
}

TEST_F(ItemOnBus, titleSaysWhatTheMenuSaysIsRecorded) {
  program->setTitle(" 01:05");
  panel.takeSignals();
  auto& appKit = program->appKit();
  const auto menu = appKit.makeMenu();
  menu->addItem(appKit.makeMenuItem("Recording from: Web Radio", std::nullopt, ""));
  program->item().setMenu(menu);
  EXPECT_THAT(panel.itemProperty("Title"), Optional(std::string("'Recording Web Radio, 01:05'")));
  EXPECT_THAT(panel.takeSignals(), IsSupersetOf({"NewTitle()", "NewToolTip()"}));
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
                          "NewTitle()", "NewToolTip()"));
}

TEST_F(ItemOnBus, iconIsDescribedInEveryState) {
  const auto description = [this](const std::shared_ptr<NS::Image>& image) {
    program->item().button()->setImage(image);
    return panel.itemProperty("IconAccessibleDesc").value_or("");
  };
  auto& appKit = program->appKit();
  const auto idle = appKit.makeSystemSymbol("waveform.circle");
  idle->setTemplate(true);
  EXPECT_EQ(description(idle), "'Audrel, not recording'");
  EXPECT_EQ(description(program->tinted("waveform.circle.fill", appKit.systemRedColor())),
            "'Audrel, recording'");
  EXPECT_EQ(description(program->tinted("waveform.circle.fill", appKit.systemOrangeColor())),
            "'Audrel, recording for more than an hour'");
}

/// What a picture has of each dot beside colour, for the eye that sees none.
std::string shapeOf(Panel& panel) {
  const auto pixmaps = panel.itemProperty("IconPixmap").value_or("");
  std::string shape;
  // Four bytes a dot, of which the first is how much it covers.
  for (std::size_t at = pixmaps.find("0x"), byte = 0; at != std::string::npos;
       at = pixmaps.find("0x", at + 1), ++byte) {
    if (byte % 4 == 0) {
      shape += pixmaps.substr(at, 4);
    }
  }
  return shape;
}

TEST_F(ItemOnBus, iconHasAShapeOfItsOwnInEveryState) {
  auto& appKit = program->appKit();
  const auto idle = appKit.makeSystemSymbol("waveform.circle");
  idle->setTemplate(true);
  std::set<std::string> shapes;
  for (const auto& image : {idle, program->tinted("waveform.circle.fill", appKit.systemRedColor()),
                            program->tinted("waveform.circle.fill", appKit.systemOrangeColor())}) {
    program->item().button()->setImage(image);
    shapes.insert(shapeOf(panel));
  }
  EXPECT_EQ(shapes.size(), 3U);
  EXPECT_THAT(shapes, Each(StartsWith("0x00")));
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
