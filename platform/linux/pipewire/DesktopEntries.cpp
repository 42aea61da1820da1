#include "platform/linux/pipewire/DesktopEntries.h"

#include <gio/gdesktopappinfo.h>

#include <filesystem>
#include <memory>
#include <string_view>

namespace audrel::linuxos {

namespace {

struct ObjectRelease {
  void operator()(gpointer object) const { g_object_unref(object); }
};
struct Free {
  void operator()(gpointer memory) const { g_free(memory); }
};

using AppInfo = std::unique_ptr<GDesktopAppInfo, ObjectRelease>;

constexpr std::string_view suffix = ".desktop";

AppInfo load(const std::string& id) {
  return AppInfo(g_desktop_app_info_new((id + std::string(suffix)).c_str()));
}

DesktopEntry entryOf(GAppInfo* info) {
  std::string id = g_app_info_get_id(info) != nullptr ? g_app_info_get_id(info) : "";
  if (id.ends_with(suffix)) {
    id.resize(id.size() - suffix.size());
  }
  return {.id = id, .name = g_app_info_get_name(info)};
}

/// Whether an entry's program, a name to be looked up or a path, is the one at `executable`,
/// symbolic links (/etc/alternatives) followed.
bool startsExecutable(const char* program, const std::string& executable) {
  const std::unique_ptr<char, Free> found(g_find_program_in_path(program));
  if (!found) {
    return false;
  }
  std::error_code error;
  return std::filesystem::equivalent(found.get(), executable, error);
}

/// Interpreters and launchers run many applications: their path tells of none.
bool mayStandForApplication(const char* program) {
  const std::string name = std::filesystem::path(program).filename();
  return name != "env" && name != "sh" && name != "bash" && name != "java" && name != "flatpak" &&
         name != "snap" && !name.starts_with("python") && !name.starts_with("perl") &&
         name != "gjs" && name != "node" && !name.starts_with("electron");
}

}  // namespace

std::optional<DesktopEntry> desktopEntryById(const std::string& id) {
  const AppInfo info = id.empty() ? nullptr : load(id);
  return info ? std::optional(entryOf(G_APP_INFO(info.get()))) : std::nullopt;
}

std::optional<DesktopEntry> desktopEntryOfExecutable(const std::string& executable) {
  std::optional<DesktopEntry> result;
  if (executable.empty()) {
    return result;
  }
  GList* all = g_app_info_get_all();
  for (GList* item = all; item != nullptr && !result; item = item->next) {
    auto* info = G_APP_INFO(item->data);
    const char* program = g_app_info_get_executable(info);
    if (program != nullptr && g_app_info_should_show(info) != FALSE &&
        mayStandForApplication(program) && startsExecutable(program, executable)) {
      result = entryOf(info);
    }
  }
  g_list_free_full(all, g_object_unref);
  return result;
}

bool isTerminal(const DesktopEntry& entry) {
  const AppInfo info = load(entry.id);
  const char* categories = info ? g_desktop_app_info_get_categories(info.get()) : nullptr;
  return categories != nullptr &&
         std::string_view(categories).find("TerminalEmulator") != std::string_view::npos;
}

}  // namespace audrel::linuxos
