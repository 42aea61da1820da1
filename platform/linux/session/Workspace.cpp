#include "platform/linux/session/Workspace.h"

#include <optional>
#include <string>

#include "platform/linux/session/Launcher.h"
#include "platform/linux/session/PrivacySettings.h"

namespace audrel::linuxos {

namespace {

constexpr const char* systemPreferences = "x-apple.systempreferences:";

constexpr SessionBus::Method showItems = {.service = "org.freedesktop.FileManager1",
                                          .path = "/org/freedesktop/FileManager1",
                                          .interface = "org.freedesktop.FileManager1",
                                          .member = "ShowItems"};

/// Nothing for a path that is not absolute.
std::optional<std::string> uriOf(const std::filesystem::path& path) {
  const StringHandle uri(g_filename_to_uri(path.c_str(), nullptr, nullptr));
  return uri == nullptr ? std::nullopt : std::optional<std::string>(uri.get());
}

GVariant* showItemsArguments(const std::vector<std::filesystem::path>& files) {
  GVariantBuilder uris;
  g_variant_builder_init(&uris, G_VARIANT_TYPE_STRING_ARRAY);
  for (const auto& file : files) {
    if (const auto uri = uriOf(file)) {
      g_variant_builder_add(&uris, "s", uri->c_str());
    }
  }
  constexpr const char* noStartupId = "";
  return g_variant_new("(ass)", &uris, noStartupId);
}

}  // namespace

bool Workspace::openURL(const NS::URL& url) {
  if (url.absoluteString.starts_with(systemPreferences)) {
    if (openPrivacySettings()) {
      return true;
    }
    notifier_.notify({.summary = "No privacy settings were found",
                      .body = "Audio capture is allowed by the audio server, PipeWire, and its "
                              "session manager; this desktop has no settings for it that Audrel "
                              "knows. Where Audrel runs in a sandbox, look at the sandbox's "
                              "permissions."});
    return false;
  }
  if (const auto failure = openUri(url.absoluteString)) {
    notifier_.notify(
        {.summary = "The link could not be opened", .body = url.absoluteString + "\n" + *failure});
    return false;
  }
  return true;
}

void Workspace::activateFileViewerSelecting(const std::vector<std::filesystem::path>& files) {
  if (files.empty()) {
    return;
  }
  bus_.call(showItems, showItemsArguments(files),
            [this, file = files.front()](const SessionBus::Answer& answer) {
              if (answer.values == nullptr) {
                openFolderOf(file);
              }
            });
}

void Workspace::openFolderOf(const std::filesystem::path& file) {
  const auto folder = uriOf(file.parent_path());
  if (!folder || openUri(*folder)) {
    notifier_.notify(
        {.summary = "No file manager was found", .body = "The file: " + file.string()});
  }
}

}  // namespace audrel::linuxos
