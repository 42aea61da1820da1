#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace audrel::linuxos {

/// What was read of a file.
struct FileText {
  std::optional<std::string> text;
  bool isAbsent = false;  ///< there is no such file
  std::string failure;    ///< why there is no text; empty when there is one
};

/// The text of a file that another program wrote, or put something else in the place of: a pipe
/// that nobody writes to, a device without an end. Never waits, and takes no more memory than
/// `limit` bytes: what is no regular file, or is larger, is a failure. Links are followed. (A file
/// system that is itself a program, of the same user, can still hold a read up.)
FileText readForeignFile(const std::filesystem::path& path, std::size_t limit);

/// The same for `name` in a folder whose owner is not trusted: a link in its place is a failure.
/// The way to the folder itself may lead through links.
FileText readForeignFileIn(const std::filesystem::path& folder, const char* name,
                           std::size_t limit);

}  // namespace audrel::linuxos
