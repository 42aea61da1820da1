#include <gmock/gmock.h>
#include <gtk/gtk.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/linux/loop/GLibHandles.h"
#include "platform/linux/tray/IconTheme.h"
#include "platform/linux/tray/Pixmap.h"
#include "platform/linux/tray/Symbols.h"
#include "tests/packaging/InstalledTree.h"
#include "tests/packaging/KeyFile.h"
#include "tests/support/RunTool.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::packaging {
namespace {

namespace fs = std::filesystem;
using linuxos::IconTheme;
using linuxos::Picture;

constexpr NS::Size pictureSize{18, 18};

Picture symbol(std::string_view name) {
  return {
      .size = pictureSize, .isTemplate = false, .steps = {linuxos::SymbolStep{std::string(name)}}};
}

Picture idle() {
  Picture picture = symbol(linuxos::waveformInRing);
  picture.isTemplate = true;
  return picture;
}

Picture disc(linuxos::Rgb color) {
  const NS::Rect whole{0, 0, pictureSize};
  const auto inBlack = std::make_shared<const Picture>(symbol(linuxos::waveformInDisc));
  return {.size = pictureSize,
          .isTemplate = false,
          .steps = {linuxos::PictureStep{inBlack, whole}, linuxos::FillStep{color, whole}}};
}

/// All that the status item shows.
std::vector<Picture> statusPictures() {
  return {idle(), disc(linuxos::systemRed), disc(linuxos::systemOrange)};
}

fs::path builtIcons() {
  return fs::path(AUDREL_BINARY_DIR) / "share" / "icons";
}

/// The names of the icons in one context of every size, without endings.
std::set<std::string> namesIn(const fs::path& icons, const char* context) {
  std::set<std::string> names;
  std::error_code error;
  for (const auto& folder : fs::directory_iterator(icons / "hicolor", error)) {
    for (const auto& icon : fs::directory_iterator(folder.path() / context, error)) {
      names.insert(icon.path().stem());
    }
  }
  return names;
}

std::set<std::string> namesFoundBy(const IconTheme& theme) {
  std::set<std::string> names;
  for (const Picture& picture : statusPictures()) {
    names.insert(theme.iconFor(picture).value_or("none"));
  }
  return names;
}

/// Those with icons, as "scalable/status".
std::set<std::string> foldersOf(const fs::path& hicolor) {
  std::set<std::string> folders;
  std::error_code error;
  for (const auto& entry : fs::recursive_directory_iterator(hicolor, error)) {
    if (entry.is_regular_file(error) && entry.path().filename() != "index.theme") {
      folders.insert(entry.path().parent_path().lexically_relative(hicolor));
    }
  }
  return folders;
}

/// Desktops look into no other folders of the theme, whatever is there.
std::set<std::string> foldersThatDesktopsKnow() {
  std::stringstream list(
      KeyFile("/usr/share/icons/hicolor/index.theme").text("Icon Theme", "Directories"));
  std::set<std::string> folders;
  for (std::string folder; std::getline(list, folder, ',');) {
    folders.insert(folder);
  }
  return folders;
}

TEST(IconTree, isWhereDesktopsLook) {
  const auto known = foldersThatDesktopsKnow();
  const auto ours = foldersOf(builtIcons() / "hicolor");
  EXPECT_FALSE(ours.empty());
  for (const std::string& folder : ours) {
    EXPECT_TRUE(known.contains(folder)) << folder;
  }
}

TEST(IconTree, theInstalledProgramFindsTheInstalledIcons) {
  const InstalledTree& tree = InstalledTree::shared();
  ASSERT_TRUE(tree.isInstalled());
  const IconTheme theme = IconTheme::ofProgramIn(tree.prefix() / "bin");
  EXPECT_EQ(theme.folder(), tree.prefix() / "share/icons");
  EXPECT_EQ(namesFoundBy(theme), namesIn(tree.prefix() / "share/icons", "status"));
}

// GNOME's extension does so, with what its shell has of GTK's reader of themes.
TEST(IconTree, aPanelThatLooksIntoTheFolderOfTheBuildAloneFindsTheStatusIcons) {
  const std::unique_ptr<GtkIconTheme, linuxos::Releaser<g_object_unref>> reader(
      gtk_icon_theme_new());
  const std::string folder = builtIcons();
  const char* path = folder.c_str();
  gtk_icon_theme_set_search_path(reader.get(), &path, 1);
  const auto names = namesIn(builtIcons(), "status");
  EXPECT_FALSE(names.empty());
  for (const std::string& name : names) {
    EXPECT_TRUE(gtk_icon_theme_has_icon(reader.get(), name.c_str())) << name;
  }
}

/// Width and height in a PNG's header.
std::array<int, 2> sizeOf(const fs::path& png) {
  constexpr std::streamoff headerStart = 16;
  std::ifstream stream(png, std::ios::binary);
  stream.seekg(headerStart);
  std::array<int, 2> sides{};
  for (int& side : sides) {
    for (int byte = 0; byte < 4; ++byte) {
      side = side * 256 + stream.get();
    }
  }
  return sides;
}

TEST(IconTree, eachSizeOfTheApplicationIconHasThatSize) {
  for (const int side : {16, 22, 24, 32, 48, 64, 128, 256}) {
    const std::string folder = std::to_string(side) + "x" + std::to_string(side);
    const fs::path icon =
        builtIcons() / "hicolor" / folder / "apps" / "io.github.audrel.Audrel.png";
    EXPECT_EQ(sizeOf(icon), (std::array{side, side})) << folder;
  }
}

/// What an icon's drawing looks like in a square, as `drawPixmap` tells it. Empty on failure.
std::vector<std::uint8_t> rendered(const fs::path& drawing, int side) {
  const support::TemporaryFolder folder;
  const std::string png = folder.path() / "icon.png";
  const std::string dots = std::to_string(side);
  support::runTool(
      {"rsvg-convert", "--width", dots, "--height", dots, "--output", png, drawing.string()});
  const auto result = support::runTool(
      {"ffmpeg", "-v", "error", "-i", png, "-f", "rawvideo", "-pix_fmt", "argb", "-"});
  return {result.output.begin(), result.output.end()};
}

/// The share of the square in which two pictures differ, by alpha.
double difference(const std::vector<std::uint8_t>& one, const std::vector<std::uint8_t>& other) {
  double sum = 0;
  for (std::size_t dot = 0; dot < one.size(); dot += 4) {
    sum += std::abs(one[dot] - other[dot]) / 255.0;
  }
  return sum * 4 / static_cast<double>(one.size());
}

/// The dots that are neither transparent nor at an edge, and have another colour than `color`.
std::ptrdiff_t dotsOfOtherColor(const std::vector<std::uint8_t>& argb, linuxos::Rgb color) {
  std::ptrdiff_t count = 0;
  for (std::size_t dot = 0; dot < argb.size(); dot += 4) {
    const linuxos::Rgb found{argb[dot + 1], argb[dot + 2], argb[dot + 3]};
    count += argb[dot] == 255 && !(found == color) ? 1 : 0;
  }
  return count;
}

class StatusIconTest : public testing::Test {
 protected:
  static constexpr int side = 96;

  static std::vector<std::uint8_t> icon(const std::string& name) {
    return rendered(builtIcons() / "hicolor" / name, side);
  }
};

TEST_F(StatusIconTest, hasTheShapeThatIsDrawnWhereThereAreNoIcons) {
  const struct {
    const char* file;
    Picture picture;
  } icons[] = {
      {"scalable/status/io.github.audrel.Audrel-idle-symbolic.svg", idle()},
      {"scalable/status/io.github.audrel.Audrel-recording.svg", disc(linuxos::systemRed)},
      {"scalable/status/io.github.audrel.Audrel-warning.svg", disc(linuxos::systemOrange)},
  };
  for (const auto& [file, picture] : icons) {
    const auto shown = icon(file);
    const auto drawn = linuxos::drawPixmap(linuxos::inShapeOfState(picture), side).argb;
    ASSERT_EQ(shown.size(), drawn.size()) << file;
    // Only along the edges, where the two round differently.
    EXPECT_LT(difference(shown, drawn), 0.005) << file;
  }
}

TEST_F(StatusIconTest, hasTheColorOfItsState) {
  const auto recording = icon("scalable/status/io.github.audrel.Audrel-recording.svg");
  const auto warning = icon("scalable/status/io.github.audrel.Audrel-warning.svg");
  const auto idleInGrey = icon("scalable/status/io.github.audrel.Audrel-idle-symbolic.svg");
  ASSERT_FALSE(recording.empty() || warning.empty() || idleInGrey.empty());
  EXPECT_EQ(dotsOfOtherColor(recording, linuxos::systemRed), 0);
  EXPECT_EQ(dotsOfOtherColor(warning, linuxos::systemOrange), 0);
  EXPECT_EQ(dotsOfOtherColor(idleInGrey, {0x80, 0x80, 0x80}), 0) << "for any panel";
  EXPECT_GT(dotsOfOtherColor(warning, linuxos::systemRed), 0);
}

}  // namespace
}  // namespace audrel::packaging
