#include "platform/linux/session/PrivacySettings.h"

#include <algorithm>

#include "platform/linux/session/Launcher.h"
#include "platform/linux/system/Environment.h"

namespace audrel::linuxos {

namespace {

struct Page {
  std::string_view desktop;
  const char* entry;
};

// A desktop's pages changed their names over time: the newer ones stand first.
constexpr Page pages[] = {
    {"GNOME", "gnome-privacy-panel.desktop"},
    {"GNOME", "gnome-microphone-panel.desktop"},
    {"GNOME", "org.gnome.Settings.desktop"},
    {"KDE", "kcm_app-permissions.desktop"},
    {"KDE", "kcm_flatpak.desktop"},
    {"KDE", "systemsettings.desktop"},
    {"X-Cinnamon", "cinnamon-settings-privacy.desktop"},
    {"X-Cinnamon", "cinnamon-settings.desktop"},
    {"Budgie", "budgie-microphone-panel.desktop"},
    {"Budgie", "budgie-control-center.desktop"},
    {"XFCE", "xfce-settings-manager.desktop"},
    {"MATE", "matecc.desktop"},
    {"LXQt", "lxqt-config.desktop"},
};

std::vector<std::string_view> split(std::string_view names) {
  std::vector<std::string_view> result;
  while (!names.empty()) {
    const auto end = std::min(names.find(':'), names.size());
    result.push_back(names.substr(0, end));
    names.remove_prefix(std::min(end + 1, names.size()));
  }
  return result;
}

}  // namespace

std::vector<std::string> privacySettingsEntries(std::string_view currentDesktop) {
  std::vector<std::string> entries;
  for (const std::string_view desktop : split(currentDesktop)) {
    for (const Page& page : pages) {
      if (page.desktop == desktop) {
        entries.emplace_back(page.entry);
      }
    }
  }
  return entries;
}

bool openPrivacySettings() {
  const auto entries =
      privacySettingsEntries(environmentVariable("XDG_CURRENT_DESKTOP").value_or(""));
  return std::ranges::any_of(entries, startDesktopEntry);
}

}  // namespace audrel::linuxos
