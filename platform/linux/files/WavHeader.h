#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/linux/files/ByteWriter.h"

namespace audrel::linuxos {

/// What a WAV file of 16-bit little-endian samples holds.
struct WavFormat {
  std::uint32_t sampleRate = 0;  ///< frames per second
  std::uint16_t channels = 0;    ///< at most `maximumChannels`

  static constexpr std::uint32_t maximumChannels = 32767;

  std::size_t bytesPerFrame() const { return std::size_t{channels} * 2; }
};

/// Writes the header of a file with `dataSize` bytes of samples, which follow it. Its length
/// depends on `format` alone, so that it can be replaced while the file grows: behind the RIFF
/// header a chunk is reserved (`JUNK`) that becomes the `ds64` chunk of RF64 (EBU Tech 3306) once
/// the sizes need more than 32 bits. More than two channels need the extensible form with its
/// channel mask.
void writeWavHeader(ByteWriter& out, const WavFormat& format, std::uint64_t dataSize);

std::size_t wavHeaderSize(const WavFormat& format);

/// What a header tells.
struct WavHeader {
  WavFormat format;
  std::uint64_t dataSize = 0;  ///< bytes of whole frames
};

/// Reads back what `writeWavHeader` writes, from the first `longestWavHeader` bytes of a file or
/// all; nothing when they differ from that.
std::optional<WavHeader> readWavHeader(std::span<const std::byte> bytes);

constexpr std::size_t longestWavHeader = 104;

}  // namespace audrel::linuxos
