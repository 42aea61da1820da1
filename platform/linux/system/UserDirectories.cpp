#include "platform/linux/system/UserDirectories.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace audrel::linuxos {

namespace {

void skipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

bool take(std::string_view& text, std::string_view expected) {
  if (!text.starts_with(expected)) {
    return false;
  }
  text.remove_prefix(expected.size());
  return true;
}

/// The text up to the closing quote; nothing when there is none.
std::optional<std::string> unquoted(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') {
      return result;
    }
    if (text[i] == '\\' && i + 1 < text.size()) {
      ++i;
    }
    result.push_back(text[i]);
  }
  return std::nullopt;
}

std::optional<std::filesystem::path> directoryOfLine(std::string_view line, std::string_view name,
                                                     const std::filesystem::path& home) {
  skipBlanks(line);
  if (!take(line, name)) {
    return std::nullopt;
  }
  skipBlanks(line);
  if (!take(line, "=")) {
    return std::nullopt;
  }
  skipBlanks(line);
  if (!take(line, "\"")) {
    return std::nullopt;
  }
  const bool belowHome = take(line, "$HOME");
  const auto rest = unquoted(line);
  if (!rest.has_value() || !(rest->starts_with('/') || (belowHome && rest->empty()))) {
    return std::nullopt;
  }
  return belowHome ? std::filesystem::path(home.native() + *rest) : std::filesystem::path(*rest);
}

}  // namespace

std::optional<std::filesystem::path> userDirectory(std::istream& file, std::string_view name,
                                                   const std::filesystem::path& home) {
  std::optional<std::filesystem::path> found;
  for (std::string line; std::getline(file, line);) {
    if (auto directory = directoryOfLine(line, name, home); directory.has_value()) {
      found = std::move(directory);
    }
  }
  return found;
}

}  // namespace audrel::linuxos
