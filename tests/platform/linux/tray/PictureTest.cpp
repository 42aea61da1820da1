#include "platform/linux/tray/Picture.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "platform/linux/tray/IconTheme.h"
#include "platform/linux/tray/Image.h"
#include "platform/linux/tray/Pixmap.h"
#include "tests/platform/linux/tray/TrayProgram.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

class PictureTest : public testing::Test {
 protected:
  std::shared_ptr<NS::Image> symbol(const std::string& name, bool isTemplate) {
    auto image = appKit.makeSystemSymbol(name)->withSymbolConfiguration({14, 0});
    image->setTemplate(isTemplate);
    return image;
  }

  /// What the program does for a coloured symbol.
  std::shared_ptr<NS::Image> tinted(const std::string& name,
                                    const std::shared_ptr<NS::Color>& color) {
    return trayProgram->tinted(name, color);
  }

  static const Picture& pictureOf(const std::shared_ptr<NS::Image>& image) {
    return static_cast<const Image&>(*image).picture();
  }

  const std::shared_ptr<traytest::TrayProgram> trayProgram = traytest::TrayProgram::start();
  NS::AppKit& appKit = trayProgram->appKit();
};

/// A dot's alpha, red, green and blue.
using Dot = std::vector<int>;

Dot dotAt(const Pixmap& pixmap, int row, int column) {
  const auto start = 4 * static_cast<std::size_t>(row * pixmap.side + column);
  return {pixmap.argb[start], pixmap.argb[start + 1], pixmap.argb[start + 2],
          pixmap.argb[start + 3]};
}

TEST_F(PictureTest, thereAreTheTwoSymbolsOfTheProgramAlone) {
  EXPECT_NE(appKit.makeSystemSymbol("waveform.circle"), nullptr);
  EXPECT_NE(appKit.makeSystemSymbol("waveform.circle.fill"), nullptr);
  EXPECT_EQ(appKit.makeSystemSymbol("waveform"), nullptr);
}

TEST_F(PictureTest, aSymbolIsAsLargeAsItsConfigurationSays) {
  const auto image = appKit.makeSystemSymbol("waveform.circle");
  EXPECT_EQ(image->size(), (NS::Size{16, 16}));
  const auto large = image->withSymbolConfiguration({40, 0});
  ASSERT_NE(large, nullptr);
  EXPECT_EQ(large->size(), (NS::Size{50, 50}));
  EXPECT_EQ(image->size(), (NS::Size{16, 16}));
}

TEST_F(PictureTest, onlyASymbolHasSymbolConfigurations) {
  EXPECT_EQ(appKit.makeImage({16, 16})->withSymbolConfiguration({14, 0}), nullptr);
}

TEST_F(PictureTest, aTintedSymbolIsToldByItsSteps) {
  EXPECT_EQ(tintedSymbolOf(pictureOf(symbol("waveform.circle", true))),
            (TintedSymbol{"waveform.circle", std::nullopt}));
  EXPECT_EQ(tintedSymbolOf(pictureOf(tinted("waveform.circle.fill", appKit.systemRedColor()))),
            (TintedSymbol{"waveform.circle.fill", systemRed}));
  EXPECT_EQ(tintedSymbolOf(pictureOf(tinted("waveform.circle.fill", appKit.systemOrangeColor()))),
            (TintedSymbol{"waveform.circle.fill", systemOrange}));
}

TEST_F(PictureTest, whatElseIsDrawnIsNoTintedSymbol) {
  const auto empty = appKit.makeImage({16, 16});
  EXPECT_EQ(tintedSymbolOf(pictureOf(empty)), std::nullopt);

  const auto small = appKit.makeImage({16, 16});
  small->lockFocus();
  symbol("waveform.circle.fill", false)->drawInRect({0, 0, {8, 8}});
  small->unlockFocus();
  EXPECT_EQ(tintedSymbolOf(pictureOf(small)), std::nullopt);

  const auto twice = tinted("waveform.circle.fill", appKit.systemRedColor());
  twice->lockFocus();
  appKit.fillRect({0, 0, twice->size()}, NS::CompositingOperation::sourceAtop);
  twice->unlockFocus();
  EXPECT_EQ(tintedSymbolOf(pictureOf(twice)), std::nullopt);
}

TEST_F(PictureTest, drawingWithoutFocusGoesNowhere) {
  const auto image = symbol("waveform.circle", false);
  const Picture before = pictureOf(image);
  image->drawInRect({0, 0, image->size()});
  appKit.fillRect({0, 0, image->size()}, NS::CompositingOperation::sourceAtop);
  image->unlockFocus();
  EXPECT_EQ(pictureOf(image), before);
}

TEST_F(PictureTest, equalStepsMakeEqualPictures) {
  const auto red = tinted("waveform.circle.fill", appKit.systemRedColor());
  EXPECT_EQ(pictureOf(red), pictureOf(tinted("waveform.circle.fill", appKit.systemRedColor())));
  EXPECT_NE(pictureOf(red), pictureOf(tinted("waveform.circle.fill", appKit.systemOrangeColor())));
  EXPECT_NE(pictureOf(red), pictureOf(tinted("waveform.circle", appKit.systemRedColor())));
}

TEST_F(PictureTest, theFillPaintsOnlyWhereTheSymbolHasInk) {
  const Pixmap pixmap =
      drawPixmap(pictureOf(tinted("waveform.circle.fill", appKit.systemRedColor())), 48);
  EXPECT_EQ(pixmap.argb.size(), 48U * 48U * 4U);
  EXPECT_EQ(dotAt(pixmap, 0, 0), (Dot{0, 0, 0, 0}));         // outside the disc
  EXPECT_EQ(dotAt(pixmap, 24, 24), (Dot{0, 0, 0, 0}));       // the wave is cut out
  EXPECT_EQ(dotAt(pixmap, 8, 24), (Dot{255, 224, 27, 36}));  // the disc
}

TEST_F(PictureTest, aTemplateIsDrawnInAGreyForAnyPanel) {
  const Pixmap pixmap = drawPixmap(pictureOf(symbol("waveform.circle", true)), 48);
  EXPECT_EQ(dotAt(pixmap, 24, 24), (Dot{255, 128, 128, 128}));  // the wave
  EXPECT_EQ(dotAt(pixmap, 8, 24), (Dot{0, 0, 0, 0}));           // between wave and ring
}

TEST_F(PictureTest, withoutTemplateASymbolIsBlack) {
  const Pixmap pixmap = drawPixmap(pictureOf(symbol("waveform.circle", false)), 48);
  EXPECT_EQ(dotAt(pixmap, 24, 24), (Dot{255, 0, 0, 0}));
}

TEST_F(PictureTest, theOriginIsAtTheLowerLeft) {
  const auto image = appKit.makeImage({40, 40});
  image->lockFocus();
  symbol("waveform.circle.fill", false)->drawInRect({0, 0, {20, 20}});
  image->unlockFocus();
  const Pixmap pixmap = drawPixmap(pictureOf(image), 48);
  EXPECT_EQ(dotAt(pixmap, 40, 4), (Dot{255, 0, 0, 0}));
  EXPECT_EQ(dotAt(pixmap, 4, 4), (Dot{0, 0, 0, 0}));
  EXPECT_EQ(dotAt(pixmap, 40, 40), (Dot{0, 0, 0, 0}));
}

TEST_F(PictureTest, aPictureThatIsNotSquareIsCentred) {
  const auto image = appKit.makeImage({20, 40});
  image->lockFocus();
  symbol("waveform.circle.fill", false)->drawInRect({0, 0, {20, 40}});
  image->unlockFocus();
  const Pixmap pixmap = drawPixmap(pictureOf(image), 48);
  EXPECT_EQ(dotAt(pixmap, 8, 24).front(), 255);
  EXPECT_EQ(dotAt(pixmap, 24, 4).front(), 0);
  EXPECT_EQ(dotAt(pixmap, 24, 44).front(), 0);
}

class IconThemeTest : public PictureTest {
 protected:
  void addIcon(const std::string& size, const std::string& name) const {
    const auto contextFolder = icons / "hicolor" / size / "apps";
    std::error_code error;
    std::filesystem::create_directories(contextFolder, error);
    std::ofstream(contextFolder / name) << "an icon";
  }

  support::TemporaryFolder folder;
  const std::filesystem::path icons = folder.path() / "share" / "icons";
};

TEST_F(IconThemeTest, namesTheIconThatShowsAPicture) {
  addIcon("scalable", "io.github.audrel.Audrel-recording.svg");
  addIcon("22x22", "io.github.audrel.Audrel-warning.png");
  addIcon("symbolic", "io.github.audrel.Audrel-idle-symbolic.svg");
  const IconTheme theme(icons);
  EXPECT_EQ(theme.folder(), icons);
  EXPECT_EQ(theme.iconFor(pictureOf(symbol("waveform.circle", true))),
            "io.github.audrel.Audrel-idle-symbolic");
  EXPECT_EQ(theme.iconFor(pictureOf(tinted("waveform.circle.fill", appKit.systemRedColor()))),
            "io.github.audrel.Audrel-recording");
  EXPECT_EQ(theme.iconFor(pictureOf(tinted("waveform.circle.fill", appKit.systemOrangeColor()))),
            "io.github.audrel.Audrel-warning");
}

TEST_F(IconThemeTest, hasNoNameForOtherPictures) {
  for (const char* name : {"-idle-symbolic.svg", "-recording.svg", "-warning.svg"}) {
    addIcon("scalable", std::string("io.github.audrel.Audrel") + name);
  }
  const IconTheme theme(icons);
  EXPECT_EQ(theme.iconFor(pictureOf(symbol("waveform.circle", false))), std::nullopt);
  EXPECT_EQ(theme.iconFor(pictureOf(symbol("waveform.circle.fill", true))), std::nullopt);
  EXPECT_EQ(theme.iconFor(pictureOf(tinted("waveform.circle", appKit.systemRedColor()))),
            std::nullopt);
  EXPECT_EQ(theme.iconFor(pictureOf(appKit.makeImage({16, 16}))), std::nullopt);
}

TEST_F(IconThemeTest, hasNoNameForAnIconWithoutAFile) {
  addIcon("scalable", "io.github.audrel.Audrel-recording.svg");
  const IconTheme theme(icons);
  EXPECT_EQ(theme.iconFor(pictureOf(symbol("waveform.circle", true))), std::nullopt);
  EXPECT_NE(theme.iconFor(pictureOf(tinted("waveform.circle.fill", appKit.systemRedColor()))),
            std::nullopt);
}

TEST_F(IconThemeTest, ofOtherProgramsAloneIsNotOurs) {
  addIcon("scalable", "another-program.svg");
  EXPECT_TRUE(IconTheme::ofProgramIn(folder.path()).folder().empty());
}

}  // namespace
}  // namespace audrel::linuxos
