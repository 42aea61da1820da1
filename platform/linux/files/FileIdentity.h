#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace audrel::linuxos {

/// Which file of the system's one is, whatever it is called.
///
/// The number of a device is another one after the next start of the computer, or when the disk is
/// plugged in again; the number of a file is given again when the file is gone. The moment of its
/// creation tells files apart where either happened, and nobody can change it.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t born = 0;  ///< nanoseconds since 1970; 0: the file system does not keep it

  bool operator==(const FileIdentity&) const = default;
};

/// What is to know about a file before it is opened.
struct FileStatus {
  FileIdentity identity;
  bool isRegular = false;
  uid_t owner = 0;
  std::uint64_t size = 0;
  std::chrono::system_clock::time_point written;  ///< last
};

/// Of an open file; nothing on failure.
std::optional<FileStatus> statusOf(int descriptor) noexcept;

/// Of what has that name, a link itself included; nothing and `errno` on failure.
std::optional<FileStatus> statusOf(const std::filesystem::path& path) noexcept;

}  // namespace audrel::linuxos
