#include "platform/linux/session/UserDefaults.h"

#include <string_view>
#include <system_error>
#include <utility>

#include "platform/linux/system/Environment.h"
#include "platform/linux/system/ForeignFile.h"

namespace audrel::linuxos {

namespace {

namespace fs = std::filesystem;

constexpr const char* group = "Defaults";

std::string allBytesAboveAscii() {
  std::string bytes;
  for (int byte = 0x80; byte <= 0xFF; ++byte) {
    bytes.push_back(static_cast<char>(byte));
  }
  return bytes;
}

std::string encoded(const std::string& text) {
  static const std::string readable = allBytesAboveAscii();
  const bool isUtf8 = g_utf8_validate(text.c_str(), -1, nullptr) == TRUE;
  const StringHandle escaped(g_strescape(text.c_str(), isUtf8 ? readable.c_str() : nullptr));
  return std::string("\"") + escaped.get() + "\"";
}

std::string decoded(std::string_view value) {
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
    value = value.substr(1, value.size() - 2);
  }
  return StringHandle(g_strcompress(std::string(value).c_str())).get();
}

/// A name beside `file` that nothing has yet.
fs::path freeNameFor(const fs::path& file) {
  std::error_code error;
  fs::path name = file.native() + ".broken";
  for (int counter = 2; fs::exists(fs::symlink_status(name, error)); ++counter) {
    name = file.native() + ".broken-" + std::to_string(counter);
  }
  return name;
}

/// What replaces `file` has its permissions.
int modeFor(const fs::path& file) {
  constexpr auto ownersAlone = fs::perms::owner_read | fs::perms::owner_write;
  std::error_code error;
  const auto status = fs::status(file, error);
  return static_cast<int>(fs::is_regular_file(status) ? status.permissions() : ownersAlone);
}

/// Where a link leads; the path itself when it is none, or leads nowhere.
fs::path resolved(const fs::path& file) {
  std::error_code error;
  fs::path target = fs::canonical(file, error);
  return error ? file : target;
}

/// Why it failed; nothing on success.
std::optional<std::string> replaceFile(const fs::path& file, std::string_view content) {
  constexpr int folderForItsUserAlone = 0700;
  // A folder that cannot be made shows in the write.
  g_mkdir_with_parents(file.parent_path().c_str(), folderForItsUserAlone);
  GError* failure = nullptr;
  const gboolean isWritten =
      g_file_set_contents_full(file.c_str(), content.data(), static_cast<gssize>(content.size()),
                               G_FILE_SET_CONTENTS_CONSISTENT, modeFor(file), &failure);
  const ErrorHandle error(failure);
  return isWritten == TRUE ? std::nullopt : std::optional(messageOf(error));
}

}  // namespace

UserDefaults::UserDefaults(fs::path file, std::shared_ptr<os::Logger> logger)
    : file_(std::move(file)), logger_(std::move(logger)) {}

std::optional<std::string> UserDefaults::stringForKey(const std::string& key) {
  if (const auto unsaved = unsaved_.find(key); unsaved != unsaved_.end()) {
    return unsaved->second;
  }
  const KeyFileHandle stored = load();
  if (stored == nullptr) {
    return std::nullopt;
  }
  const StringHandle value(g_key_file_get_value(stored.get(), group, key.c_str(), nullptr));
  return value == nullptr ? std::nullopt : std::optional(decoded(value.get()));
}

void UserDefaults::setString(const std::string& value, const std::string& key) {
  change(key, value);
}

void UserDefaults::removeObjectForKey(const std::string& key) {
  change(key, std::nullopt);
}

void UserDefaults::change(const std::string& key, std::optional<std::string> value) {
  unsaved_.insert_or_assign(key, std::move(value));
  save();
}

void UserDefaults::save() {
  const KeyFileHandle stored = load();
  if (stored == nullptr) {
    return;  // to replace it would lose what is in it
  }
  for (const auto& [key, value] : unsaved_) {
    if (value) {
      g_key_file_set_value(stored.get(), group, key.c_str(), encoded(*value).c_str());
    } else {
      g_key_file_remove_key(stored.get(), group, key.c_str(), nullptr);
    }
  }
  gsize size = 0;
  const StringHandle content(g_key_file_to_data(stored.get(), &size, nullptr));
  if (const auto failure = replaceFile(resolved(file_), {content.get(), size})) {
    complain("Settings cannot be saved, and last until the program ends: " + *failure);
    return;
  }
  unsaved_.clear();
  problemIsLogged_ = false;
}

/// What is stored, nothing if there is no file. Null when there is one that cannot be read.
UserDefaults::KeyFileHandle UserDefaults::load() {
  constexpr std::size_t largest = 1024 * 1024;
  const FileText file = readForeignFile(file_, largest);
  KeyFileHandle stored(g_key_file_new());
  if (file.isAbsent) {
    return stored;
  }
  if (!file.text) {
    complain("Settings cannot be read from " + file_.string() + ": " + file.failure);
    return nullptr;
  }
  GError* failure = nullptr;
  if (g_key_file_load_from_data(stored.get(), file.text->data(), file.text->size(),
                                G_KEY_FILE_KEEP_COMMENTS, &failure) == TRUE) {
    return stored;
  }
  const ErrorHandle error(failure);
  return setAside(messageOf(error)) ? KeyFileHandle(g_key_file_new()) : nullptr;
}

bool UserDefaults::setAside(const std::string& reason) {
  const fs::path kept = freeNameFor(file_);
  std::error_code error;
  fs::rename(file_, kept, error);
  if (error) {
    complain("Settings are broken (" + reason + "), and " + file_.string() +
             " cannot be renamed: " + error.message());
    return false;
  }
  logger_->error("Settings were broken (" + reason +
                 "): begun again from nothing, the old file is kept as " + kept.string());
  return true;
}

/// Once: the program reads its settings at every change of its menu.
void UserDefaults::complain(const std::string& problem) {
  if (!problemIsLogged_) {
    problemIsLogged_ = true;
    logger_->error(problem);
  }
}

fs::path userDefaultsFile(const fs::path& home) {
  const fs::path configured = environmentVariable("XDG_CONFIG_HOME").value_or("");
  return (configured.is_absolute() ? configured : home / ".config") / "audrel" / "defaults.ini";
}

}  // namespace audrel::linuxos
