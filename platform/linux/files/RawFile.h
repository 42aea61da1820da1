#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "platform/linux/files/FileIdentity.h"

namespace audrel::linuxos {

/// The system calls that a recording's file is written with, so that tests can make each of them
/// fail. Results are those of the calls: -1 and `errno` on failure. One thread at a time, but for
/// the two flushes, which one other may call meanwhile.
class RawFile {
 public:
  /// Closes the file if `close` was not called.
  virtual ~RawFile() = default;

  virtual ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept = 0;
  virtual int ftruncate(off_t size) noexcept = 0;

  /// Waits until what was written, and the length, survive a power failure. After a failure the
  /// system may have dropped what it had accepted, and tells so only once.
  virtual int sync() noexcept = 0;

  /// The same for the file's name, in the folder where it was created.
  virtual int syncFolder() noexcept = 0;

  /// Whether other programs see, by a lock (flock) that lasts from creation to `close`, that the
  /// file is in use. Not every file system has locks.
  virtual bool isLocked() const noexcept = 0;

  /// Which file it is; nothing when it is none of the system's.
  virtual std::optional<FileIdentity> identity() const noexcept { return std::nullopt; }

  /// Takes the file's name away, in the folder where it was created, unless that name is another
  /// file's by now.
  virtual void remove() noexcept = 0;

  /// How long writing may wait for a flush before it goes on beside it: a disk that keeps up takes
  /// less, and what is captured meanwhile is only in memory.
  virtual std::chrono::milliseconds patience() const noexcept {
    return std::chrono::milliseconds(200);
  }

  /// To be called once at most, and last.
  virtual int close() noexcept = 0;
};

/// Makes a new file at a path; null and `errno` in `code` on failure.
using RawFileCreator =
    std::function<std::unique_ptr<RawFile>(const std::filesystem::path& path, int* code)>;

/// Creates `path`, for its user alone (a recording may hold a talk), and locks it. Never opens,
/// follows or replaces what is there already, a link that leads nowhere included.
std::unique_ptr<RawFile> createExclusively(const std::filesystem::path& path, int* code);

}  // namespace audrel::linuxos
