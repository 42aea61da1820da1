#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/linux/files/BlockFile.h"
#include "platform/linux/files/WavHeader.h"

namespace audrel::linuxos {

/// A WAV file that is right after each of its writes, and after a power failure: a block of samples
/// first, then, once that is safe, the header that counts it, in one write each.
class WavWriter {
 public:
  WavWriter(BlockFile file, const WavFormat& format);

  /// Writes the header of an empty file. 0 or an `errno` value.
  int start();

  /// Adds whole frames. What is dropped is silence as soon as something follows it.
  std::optional<BlockFile::Failure> append(std::span<const std::byte> samples);

  /// Adds the last whole frames, writes what waits, makes all safe, and closes the file. 0 or an
  /// `errno` value: then the file is right, but ends after `countedFrames()`. Nothing may follow.
  int finish(std::span<const std::byte> samples);

  /// Frames that the header counts: those that play.
  std::uint64_t countedFrames() const;

  /// Frames of them that were dropped.
  std::uint64_t silencedFrames() const { return file_.skippedBytes() / format_.bytesPerFrame(); }

 private:
  int finishHeader();
  int updateHeader();

  /// For all that is safe; where the file ends by it.
  std::uint64_t makeHeader();

  BlockFile file_;
  WavFormat format_;
  ByteWriter header_;
  std::uint64_t headerCounts_ = 0;  // where the file ends by its header
  std::uint64_t safeCounts_ = 0;    // and by the one before, which is safe
};

}  // namespace audrel::linuxos
