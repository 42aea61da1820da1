#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/linux/files/BlockFile.h"
#include "platform/linux/files/WavHeader.h"

namespace audrel::linuxos {

/// A WAV file that is right after each of its writes: a block of samples first, then the header
/// that counts it, in one write each.
class WavWriter {
 public:
  WavWriter(BlockFile file, const WavFormat& format);

  /// Writes the header of an empty file. 0 or an `errno` value.
  int start();

  /// Adds whole frames. What is dropped is silence as soon as something follows it.
  std::optional<BlockFile::Failure> append(std::span<const std::byte> samples);

  /// Writes what waits, and closes the file. 0 or an `errno` value: then the file is right, but
  /// ends after `countedFrames()`. Nothing may follow.
  int finish();

  /// Frames that the header counts: those that play.
  std::uint64_t countedFrames() const;

  /// Frames of them that were dropped.
  std::uint64_t silencedFrames() const { return file_.skippedBytes() / format_.bytesPerFrame(); }

 private:
  int updateHeader();
  void makeHeader(std::uint64_t dataSize);

  BlockFile file_;
  WavFormat format_;
  ByteWriter header_;
  std::uint64_t headerCounts_ = 0;  // where the file ends by its header
};

}  // namespace audrel::linuxos
