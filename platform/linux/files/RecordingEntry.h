#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/files/FileIdentity.h"
#include "platform/linux/system/Machine.h"

namespace audrel::linuxos {

/// What a process leaves behind about a recording while it makes it.
struct RecordingEntry {
  std::filesystem::path file;  ///< absolute, no links among its folders, no control characters
  FileIdentity identity;
  Machine machine;

  bool operator==(const RecordingEntry&) const = default;
};

/// No entry's text is longer.
constexpr std::size_t longestEntry = 8192;

/// Whether an entry can name that file.
bool canHaveEntry(const std::filesystem::path& file);

/// Lines of "key=value".
std::string textOf(const RecordingEntry& entry);

/// Nothing when `text` is no such text, to the byte.
std::optional<RecordingEntry> entryIn(std::string_view text);

}  // namespace audrel::linuxos
