#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/linux/files/OpenFile.h"

namespace audrel::linuxos {

/// A file that is read and changed in whole steps. Interrupted and short calls are repeated; what
/// fails throws `std::system_error` with the value of `errno`.
class CheckedFile {
 public:
  explicit CheckedFile(OpenFile& file);

  /// In bytes.
  std::uint64_t size() const { return size_; }

  /// `size` bytes from `offset` on, fewer where the file ends before.
  std::vector<std::byte> read(std::uint64_t offset, std::size_t size) const;

  /// Writes, which may lengthen the file, and waits until the whole file is durable. A failure
  /// leaves the file as it was, as far as the disk lets it.
  void writeDurably(std::uint64_t offset, std::span<const std::byte> bytes);

  /// Waits until the whole file is durable, where the file system offers that.
  void sync();

 private:
  void write(std::uint64_t offset, std::span<const std::byte> bytes);

  OpenFile& file_;
  std::uint64_t size_ = 0;
};

}  // namespace audrel::linuxos
