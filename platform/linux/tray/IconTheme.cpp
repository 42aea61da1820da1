#include "platform/linux/tray/IconTheme.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <system_error>
#include <utility>

#include "platform/Identity.h"
#include "platform/linux/tray/Symbols.h"

namespace audrel::linuxos {

namespace {

namespace fs = std::filesystem;

std::span<const StateIcon> stateIcons() {
  static const StateIcon icons[] = {
      {.suffix = "-idle-symbolic",
       .description = "Audrel, not recording",
       .picture = {std::string(waveformInRing), std::nullopt},
       .shape = waveformInRing},
      {.suffix = "-recording",
       .description = "Audrel, recording",
       .picture = {std::string(waveformInDisc), systemRed},
       .shape = waveformInDisc},
      {.suffix = "-warning",
       .description = "Audrel, recording for more than an hour",
       .picture = {std::string(waveformInDisc), systemOrange},
       .shape = waveformInSquare},
  };
  return icons;
}

std::string nameOf(const StateIcon& icon) {
  return std::string(identity::bundleIdentifier).append(icon.suffix);
}

/// Whether the tree has the icon in any size and context: hicolor/<size>/<context>/<name>.
bool hasIcon(const fs::path& folder, const std::string& name) {
  std::error_code error;
  for (const auto& size : fs::directory_iterator(folder / "hicolor", error)) {
    for (const auto& context : fs::directory_iterator(size.path(), error)) {
      if (fs::exists(context.path() / (name + ".svg"), error) ||
          fs::exists(context.path() / (name + ".png"), error)) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace

const StateIcon* stateIconOf(const Picture& picture) {
  const auto symbol = tintedSymbolOf(picture);
  const auto icons = stateIcons();
  const auto found = std::ranges::find_if(icons, [&](const StateIcon& icon) {
    return symbol == icon.picture && picture.isTemplate == !icon.picture.tint.has_value();
  });
  return found == icons.end() ? nullptr : &*found;
}

Picture inShapeOfState(const Picture& picture) {
  const StateIcon* icon = stateIconOf(picture);
  if (icon == nullptr) {
    return picture;
  }
  Picture drawn{.size = picture.size,
                .isTemplate = picture.isTemplate,
                .steps = {SymbolStep{std::string(icon->shape)}}};
  if (icon->picture.tint) {
    drawn.steps.emplace_back(FillStep{*icon->picture.tint, {0, 0, picture.size}});
  }
  return drawn;
}

IconTheme::IconTheme(fs::path folder) : folder_(std::move(folder)) {
  for (const StateIcon& icon : stateIcons()) {
    if (std::string name = nameOf(icon); hasIcon(folder_, name)) {
      names_.insert(std::move(name));
    }
  }
}

IconTheme IconTheme::ofProgramIn(const fs::path& folder) {
  for (const char* place : {"share/icons", AUDREL_ICONS_FROM_PROGRAM}) {
    IconTheme theme((folder / place).lexically_normal());
    if (!theme.names_.empty()) {
      return theme;
    }
  }
  return IconTheme(fs::path());
}

std::optional<std::string> IconTheme::iconFor(const Picture& picture) const {
  const StateIcon* icon = stateIconOf(picture);
  return icon != nullptr && names_.contains(nameOf(*icon)) ? std::optional(nameOf(*icon))
                                                           : std::nullopt;
}

}  // namespace audrel::linuxos
