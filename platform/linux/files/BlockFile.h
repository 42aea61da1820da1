#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/linux/files/RawFile.h"

namespace audrel::linuxos {

/// A file that grows by whole blocks and survives that writing fails for a while.
///
/// A block that cannot be written is kept in memory and written, in order and at its place, as
/// soon as a later call can. What a failed write left behind is cut off, so that the file always
/// ends with a whole block. Failures are `errno` values; an interrupted call is repeated.
class BlockFile {
 public:
  struct Failure {
    int code = 0;          ///< why the file could not be written
    bool dropped = false;  ///< whether the block is lost because memory is full too

    bool operator==(const Failure&) const = default;
  };

  /// How much is kept in memory: about six minutes of 48 kHz stereo as WAV, half an hour as M4A
  /// at 256 kbps.
  static constexpr std::size_t defaultMemoryLimit = std::size_t{64} << 20U;

  /// Told how each `append` went. It must not throw.
  using Observer = std::function<void(const std::optional<Failure>&)>;

  /// `memoryLimit` in bytes. Closes the file when it goes, unless `close` did.
  explicit BlockFile(std::unique_ptr<RawFile> file, std::size_t memoryLimit = defaultMemoryLimit,
                     Observer observer = {});

  /// Adds `block` at `end()`, after trying again what waits. Without `dropped`, a failure means
  /// that the block waits in memory, its place taken. A dropped block takes no place.
  std::optional<Failure> append(std::span<const std::byte> block);

  /// Adds `block` at `end()` if it can be written now; else its traces are removed and 0 is not
  /// returned. Nothing may wait.
  int appendOrRemove(std::span<const std::byte> block);

  /// Leaves `size` zero bytes at `end()`. They are in the file when a later block is.
  void skip(std::uint64_t size) { end_ += size; }

  /// Of the bytes that were skipped, those that are in the file.
  std::uint64_t skippedBytes() const { return skippedBytes_; }

  /// Changes bytes that are in the file. 0 or an `errno` value.
  int overwrite(std::uint64_t offset, std::span<const std::byte> bytes);

  /// Tries again what waits. 0 when nothing is left waiting, else an `errno` value.
  int flush();

  /// Gives up what waits; `end()` is then `writtenEnd()`.
  void forgetWaiting();

  /// Where the next block goes.
  std::uint64_t end() const { return end_; }

  /// All before this is in the file.
  std::uint64_t writtenEnd() const { return writtenEnd_; }

  /// 0 or an `errno` value, which means that the system may have lost data it had accepted.
  int close();

 private:
  struct Waiting {
    std::uint64_t offset;
    std::vector<std::byte> bytes;
  };

  std::optional<Failure> writeOrKeep(std::span<const std::byte> block);
  int writeAt(std::uint64_t offset, std::span<const std::byte> bytes, std::size_t* written);
  int writeBlock(std::uint64_t offset, std::span<const std::byte> block);
  bool keep(std::span<const std::byte> block);

  std::unique_ptr<RawFile> file_;
  std::size_t memoryLimit_;
  Observer observer_;
  std::deque<Waiting> waiting_;
  std::size_t waitingBytes_ = 0;
  std::uint64_t end_ = 0;
  std::uint64_t writtenEnd_ = 0;
  std::uint64_t skippedBytes_ = 0;
};

}  // namespace audrel::linuxos
