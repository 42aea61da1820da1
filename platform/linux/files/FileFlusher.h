#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/linux/files/RawFile.h"

namespace audrel::linuxos {

/// Flushes a file on a thread of its own, one flush at a time, while the file is written on the
/// thread that calls this. A flush allocates nothing.
class FileFlusher {
 public:
  /// As `resultOf`.
  struct Result {
    int file = 0;
    std::optional<int> folder;  ///< nothing when it was not flushed
  };

  /// `file` must outlive it. Throws where there is no thread or no memory for one.
  explicit FileFlusher(RawFile& file);

  /// Waits for the flush that is under way.
  ~FileFlusher();
  FileFlusher(const FileFlusher&) = delete;
  FileFlusher& operator=(const FileFlusher&) = delete;

  /// Flushes the file, and then its folder if that is wanted and the file did not fail. Nothing may
  /// be under way.
  void begin(bool withFolder);

  /// A flush has begun whose result was not taken.
  bool isUnderWay() const;

  /// The result, once the flush is over; nothing if that takes longer than `patience`.
  std::optional<Result> take(std::chrono::milliseconds patience);

  /// Waits for it.
  Result take();

 private:
  enum class State : std::uint8_t { idle, asked, done };

  void run();
  Result taken();

  RawFile& file_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;  // of what follows
  State state_ = State::idle;
  bool isFolderWanted_ = false;
  bool isToEnd_ = false;
  Result result_;
  std::thread thread_;
};

/// 0 or the `errno` value of one of the two flushes; an interrupted one is repeated.
int resultOf(RawFile& file, int (RawFile::*flush)() noexcept);

/// What `FileFlusher` does, on the thread that calls it.
FileFlusher::Result flushNow(RawFile& file, bool withFolder);

/// Whether a flush failed because the file system has none.
bool isUnofferedFlush(int code);

}  // namespace audrel::linuxos
