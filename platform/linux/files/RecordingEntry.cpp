#include "platform/linux/files/RecordingEntry.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace audrel::linuxos {
namespace {

bool isControl(char character) {
  constexpr char firstPrintable = ' ';
  constexpr char deletion = 0x7F;
  return (character >= 0 && character < firstPrintable) || character == deletion;
}

/// Takes the line "key=value" away; nothing when another one is there.
std::optional<std::string_view> takeLine(std::string_view& text, std::string_view key) {
  const auto end = text.find('\n');
  if (end == std::string_view::npos || !text.starts_with(key) || text[key.size()] != '=') {
    return std::nullopt;
  }
  const auto value = text.substr(key.size() + 1, end - key.size() - 1);
  text.remove_prefix(end + 1);
  return value;
}

template <typename Number>
bool takeNumber(std::string_view& text, std::string_view key, Number& number) {
  const auto value = takeLine(text, key);
  if (!value) {
    return false;
  }
  const auto [end, error] = std::from_chars(value->data(), value->data() + value->size(), number);
  return error == std::errc() && end == value->data() + value->size();
}

bool takeText(std::string_view& text, std::string_view key, std::string& value) {
  const auto taken = takeLine(text, key);
  value = taken.value_or("");
  return !value.empty();
}

}  // namespace

bool canHaveEntry(const std::filesystem::path& file) {
  return file.is_absolute() && file.has_filename() && file == file.lexically_normal() &&
         std::ranges::none_of(file.native(), isControl);
}

std::string textOf(const RecordingEntry& entry) {
  return "file=" + entry.file.native() + "\ndevice=" + std::to_string(entry.identity.device) +
         "\ninode=" + std::to_string(entry.identity.inode) +
         "\nborn=" + std::to_string(entry.identity.born) + "\nmachine=" + entry.machine.id +
         "\nboot=" + entry.machine.boot + '\n';
}

std::optional<RecordingEntry> entryIn(std::string_view text) {
  RecordingEntry entry;
  std::string file;
  const bool isWhole = takeText(text, "file", file) &&
                       takeNumber(text, "device", entry.identity.device) &&
                       takeNumber(text, "inode", entry.identity.inode) &&
                       takeNumber(text, "born", entry.identity.born) &&
                       takeText(text, "machine", entry.machine.id) &&
                       takeText(text, "boot", entry.machine.boot) && text.empty();
  entry.file = file;
  return isWhole && canHaveEntry(entry.file) ? std::optional(entry) : std::nullopt;
}

}  // namespace audrel::linuxos
