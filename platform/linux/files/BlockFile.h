#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/linux/files/FileFlusher.h"
#include "platform/linux/files/RawFile.h"

namespace audrel::linuxos {

/// A file that grows by whole blocks and survives that writing fails for a while, and that the
/// power does.
///
/// A block stays in memory until a flush has brought it to the disk: it is *safe* then. One that
/// cannot be written waits and is written, in order and at its place, as soon as a later call can;
/// after a flush that failed, so are all that it was to cover, since the system may have dropped
/// them. What a failed write left behind is cut off, so that the file always ends with a whole
/// block. Failures are `errno` values; an interrupted call is repeated. A flush that the file
/// system does not offer counts as done. One that takes long goes on beside the writing, on a
/// thread of its own, so that a kill costs no more for it.
class BlockFile {
 public:
  struct Failure {
    int code = 0;          ///< why the file could not be written or flushed
    bool dropped = false;  ///< whether the block is lost because memory is full too

    bool operator==(const Failure&) const = default;
  };

  /// How much is kept in memory: about six minutes of 48 kHz stereo as WAV, half an hour as M4A
  /// at 256 kbps.
  static constexpr std::size_t defaultMemoryLimit = std::size_t{64} << 20U;

  /// Is told what happens. It must not throw, and may lack parts.
  struct Observer {
    std::function<void(const std::optional<Failure>&)> blockEnded;  ///< how each `append` went
    std::function<void(int code)> cannotFlush;  ///< once: the file system does not offer it
  };

  /// `memoryLimit` in bytes. Closes the file when it goes, unless `close` did.
  explicit BlockFile(std::unique_ptr<RawFile> file, std::size_t memoryLimit = defaultMemoryLimit,
                     Observer observer = {});
  BlockFile(BlockFile&&) = default;
  BlockFile& operator=(BlockFile&&) = delete;  // a flush may be under way
  ~BlockFile() = default;

  /// Every how many blocks `append` flushes; at first after each. One flush at a time: on a slow
  /// disk it is more.
  void flushEvery(std::size_t blocks) { blocksPerFlush_ = blocks; }

  /// Writes the first block, without a flush. 0 or an `errno` value, which means that the file is
  /// of no use.
  int begin(std::span<const std::byte> block);

  /// Adds `block` at `end()`, after trying again what waits. Without `dropped`, a failure means
  /// that the block is kept in memory, its place taken. A dropped block takes no place.
  std::optional<Failure> append(std::span<const std::byte> block);

  /// Leaves `size` zero bytes at `end()`. They are in the file when a later block is.
  void skip(std::uint64_t size) { end_ += size; }

  /// Of the bytes that were skipped, those that are safe.
  std::uint64_t skippedBytes() const { return safe_.skippedBytes; }

  /// Changes bytes that are in the file, without a flush. 0 or an `errno` value.
  int overwrite(std::uint64_t offset, std::span<const std::byte> bytes);

  /// For the end: writes and flushes all, twice at most, and gives up what is not safe then;
  /// `end()` is `safeEnd()`. In the failure, `dropped` tells that nothing of what was given up is
  /// in the file. Else some of it is, may be of use, and nothing should go over it.
  std::optional<Failure> settle();

  /// Adds `block` at `end()` and makes it safe, with all before it; else, after a second attempt,
  /// removes its traces. 0 or an `errno` value.
  int appendSafely(std::span<const std::byte> block);

  /// Changes bytes that are in the file, and makes that safe, in two attempts; what was there, if
  /// they cannot be written. 0 or an `errno` value. All else is safe.
  int overwriteSafely(std::uint64_t offset, std::span<const std::byte> bytes);

  /// Whether the last flush failed, which may have cost what was overwritten since the one before.
  bool hasFlushFailed() const { return hasFlushFailed_; }

  /// Where the next block goes.
  std::uint64_t end() const { return end_; }

  /// All blocks before this survive a power failure.
  std::uint64_t safeEnd() const { return safe_.end; }

  /// Makes the file's name safe if it is not yet, which the first flushes try. 0 or an `errno`
  /// value, which means that the system may have lost what it had accepted.
  int close();

 private:
  struct Block {
    std::uint64_t offset = 0;
    std::vector<std::byte> bytes;
  };

  struct Extent {
    std::uint64_t end = 0;
    std::uint64_t skippedBytes = 0;
  };

  int writeAndFlush();
  int writeWaiting();
  int writeBlock(std::uint64_t offset, std::span<const std::byte> block);
  int writeAt(std::uint64_t offset, std::span<const std::byte> bytes, std::size_t* written);
  void cutOff(std::uint64_t offset);
  int flush();
  bool beginFlush();
  void cover();
  int account(const FileFlusher::Result& flushed);
  bool isFlushUnderWay() const { return flusher_ && flusher_->isUnderWay(); }
  void waitForFlush();
  int flushFolder();
  int nameSafely();
  int offered(int code);
  bool keep(std::span<const std::byte> block);

  std::unique_ptr<RawFile> file_;
  std::size_t memoryLimit_;
  Observer observer_;
  std::size_t blocksPerFlush_ = 1;

  std::list<Block> unflushed_;  // written, but not safe
  std::list<Block> waiting_;    // to be written, after those
  std::list<Block> spare_;      // their memory serves again
  std::size_t keptBytes_ = 0;

  std::uint64_t end_ = 0;
  Extent written_;
  Extent safe_;
  std::uint64_t fileEnd_ = 0;  // what a failed flush was to cover included
  bool hasFlushFailed_ = false;
  bool isFolderSafe_ = false;
  bool isUnofferedTold_ = false;

  // The last flush, which covers what was written before it.
  Extent covered_;
  std::size_t coveredBlocks_ = 0;         // at the beginning of unflushed_
  std::optional<int> naming_;             // how the folder's part went, if it had one
  std::unique_ptr<FileFlusher> flusher_;  // made for the first flush; ends before its file
};

}  // namespace audrel::linuxos
