#include "platform/linux/tray/IconTheme.h"

#include <initializer_list>
#include <system_error>
#include <utility>

#include "platform/Identity.h"
#include "platform/linux/tray/Symbols.h"

namespace audrel::linuxos {

namespace {

namespace fs = std::filesystem;

constexpr const char* idleIcon = "-idle-symbolic";
constexpr const char* recordingIcon = "-recording";
constexpr const char* warningIcon = "-warning";

std::string iconName(const char* suffix) {
  return std::string(identity::bundleIdentifier) + suffix;
}

std::optional<std::string> nameFor(const Picture& picture) {
  const auto symbol = tintedSymbolOf(picture);
  if (picture.isTemplate && symbol == TintedSymbol{std::string(waveformInRing), std::nullopt}) {
    return iconName(idleIcon);
  }
  if (picture.isTemplate || !symbol || symbol->name != waveformInDisc) {
    return std::nullopt;
  }
  if (symbol->tint == systemRed) {
    return iconName(recordingIcon);
  }
  return symbol->tint == systemOrange ? std::optional(iconName(warningIcon)) : std::nullopt;
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

IconTheme::IconTheme(fs::path folder) : folder_(std::move(folder)) {
  for (const char* suffix : {idleIcon, recordingIcon, warningIcon}) {
    if (std::string name = iconName(suffix); hasIcon(folder_, name)) {
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
  auto name = nameFor(picture);
  return name && names_.contains(*name) ? name : std::nullopt;
}

}  // namespace audrel::linuxos
