#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <utility>

namespace audrel::linuxos {

/// The system calls that a file which exists is repaired with, so that tests can make each of them
/// fail. Results are those of the calls: -1 and `errno` on failure.
class OpenFile {
 public:
  /// `path` is for what is told about it.
  explicit OpenFile(std::filesystem::path path) : path_(std::move(path)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  /// Closes the file, which gives up its lock.
  virtual ~OpenFile() = default;

  virtual ssize_t pread(std::byte* data, std::size_t size, off_t offset) noexcept = 0;
  virtual ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept = 0;
  virtual int ftruncate(off_t size) noexcept = 0;

  /// Makes durable what was written.
  virtual int sync() noexcept = 0;

  virtual int stat(struct stat* status) noexcept = 0;

  /// Takes the lock that a recorder holds from creation to close, without waiting for it.
  virtual int lock() noexcept = 0;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// Opens what is at `path` to read and write it, whatever it is, without waiting for anything. Null
/// and `errno` in `code` on failure: `ELOOP` when it is a link.
std::unique_ptr<OpenFile> openExisting(const std::filesystem::path& path, int* code);

}  // namespace audrel::linuxos
