#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/files/RawFile.h"

namespace audrel::linuxos::test {

/// A file in memory that remembers each call, and fails on demand. A flush that fails with
/// EIO or ENOSPC drops what it was to cover, as Linux does, and the next one knows nothing of that.
class FakeDisk : public std::enable_shared_from_this<FakeDisk> {
 public:
  struct Call {
    enum class Kind { write, truncate, sync, syncFolder, close };
    Kind kind = Kind::write;
    std::uint64_t offset = 0;  ///< of a truncation: the new size
    std::vector<std::byte> bytes;
    std::uint64_t delivered = 0;  ///< `delivered` below, at that time
    int code = 0;                 ///< why a flush failed
  };

  /// What one call of pwrite does instead of writing all: `accepted` bytes are written and
  /// returned, or when that is 0 nothing is and `code` is the error.
  struct Outcome {
    std::size_t accepted = 0;
    int code = 0;
  };

  /// Asked for each pwrite (numbered from 1) of `size` bytes; nothing lets it pass.
  using Plan = std::function<std::optional<Outcome>(std::size_t number, std::size_t size)>;

  /// Asked for each flush, of file or folder (numbered from 1), for its error; 0 lets it pass.
  using FlushPlan = std::function<int(std::size_t number)>;

  std::unique_ptr<RawFile> open();

  /// Makes the framework write here.
  RawFileCreator creator();

  /// The contents after the first `calls` calls and `part` bytes of the next one, as a real file.
  void replay(std::size_t calls, std::size_t part, const std::filesystem::path& path) const;
  void save(const std::filesystem::path& path) const;

  Plan plan;
  std::optional<FileIdentity> identity;  ///< that the file tells
  FlushPlan flushPlan;
  int closeCode = 0;
  int truncateCode = 0;
  std::uint64_t delivered = 0;  ///< what the test has handed over so far, for the journal
  std::vector<std::byte> contents;
  std::vector<std::byte> safe;  ///< the contents at the last flush that succeeded
  std::vector<Call> journal;    ///< writes and truncations
  std::vector<Call> allCalls;   ///< those, flushes and closing
  std::size_t writes = 0;       ///< calls of pwrite, failed ones too
  std::size_t flushes = 0;      ///< of file and folder, failed ones too
  int closes = 0;
  bool isRemoved = false;

 private:
  friend class FakeFile;
};

/// Ready plans.
namespace plans {

/// The write with this number fails once.
FakeDisk::Plan failOnce(std::size_t number, int code);

/// The write with this number takes a quarter of its bytes, and the attempt to go on fails.
FakeDisk::Plan failPartWay(std::size_t number, int code);

/// From the write with this number on all fail.
FakeDisk::Plan failFrom(std::size_t number, int code);

/// Every second call is interrupted, and the others take at most `most` bytes.
FakeDisk::Plan interruptedAndShort(std::size_t most);

}  // namespace plans

}  // namespace audrel::linuxos::test
