#include "platform/linux/system/FileManager.h"

#include <pwd.h>
#include <unistd.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <system_error>

#include "platform/linux/system/Environment.h"
#include "platform/linux/system/ForeignFile.h"
#include "platform/linux/system/UserDirectories.h"

namespace audrel::linuxos {

namespace {

constexpr const char* downloadVariable = "XDG_DOWNLOAD_DIR";

std::optional<std::filesystem::path> absolutePathFrom(const char* variable) {
  const auto value = environmentVariable(variable);
  if (!value.has_value() || !value->starts_with('/')) {
    return std::nullopt;
  }
  return std::filesystem::path(*value);
}

std::filesystem::path homeFromUserDatabase() {
  constexpr std::size_t roomForNames = 16384;
  std::string names(roomForNames, '\0');
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, names.data(), names.size(), &found) == 0 && found != nullptr) {
    return found->pw_dir;
  }
  return "/";
}

/// Without a "/" at its end, so that paths compare.
std::filesystem::path trimmed(std::filesystem::path path) {
  path = path.lexically_normal();
  return path.has_filename() || path == path.root_path() ? path : path.parent_path();
}

}  // namespace

std::optional<std::filesystem::path> FileManager::downloadsDirectory() {
  const auto home = homeDirectoryForCurrentUser();
  const auto configuration = absolutePathFrom("XDG_CONFIG_HOME").value_or(home / ".config");
  constexpr std::size_t largest = 1024 * 1024;
  std::istringstream file(
      readForeignFile(configuration / "user-dirs.dirs", largest).text.value_or(""));
  auto directory = userDirectory(file, downloadVariable, home);
  if (!directory.has_value()) {
    directory = absolutePathFrom(downloadVariable);
  }
  if (!directory.has_value() || trimmed(*directory) == trimmed(home)) {
    directory = home / "Downloads";
  }
  std::error_code error;  // whoever opens a file there tells of it
  std::filesystem::create_directory(trimmed(*directory), error);
  return trimmed(*directory);
}

std::filesystem::path FileManager::homeDirectoryForCurrentUser() {
  const auto home = absolutePathFrom("HOME");
  return home.has_value() ? *home : homeFromUserDatabase();
}

bool FileManager::fileExists(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

bool FileManager::nameIsTaken(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

}  // namespace audrel::linuxos
