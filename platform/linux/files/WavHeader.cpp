#include "platform/linux/files/WavHeader.h"

#include <algorithm>
#include <array>

#include "platform/linux/files/ByteReader.h"

namespace audrel::linuxos {
namespace {

constexpr std::uint32_t chunkHeaderSize = 8;
constexpr std::uint32_t riffHeaderSize = 12;
constexpr std::uint32_t ds64Size = 28;
constexpr std::uint32_t plainFormatSize = 16;
constexpr std::uint32_t extensibleFormatSize = 40;
constexpr std::uint32_t sizeIsElsewhere = 0xFFFFFFFF;

constexpr std::uint16_t formatTagPcm = 0x0001;
constexpr std::uint16_t formatTagExtensible = 0xFFFE;
constexpr std::uint16_t bitsPerSample = 16;

std::uint32_t formatSize(const WavFormat& format) {
  return format.channels > 2 ? extensibleFormatSize : plainFormatSize;
}

/// The speakers that AAC has for a number of channels too; 0, no particular ones, for other
/// numbers.
std::uint32_t channelMask(std::uint16_t channels) {
  constexpr std::array<std::uint32_t, 9> masks = {0,    0x4,  0x3,   0x7,  0x107,
                                                  0x37, 0x3F, 0x70F, 0x63F};
  return channels < masks.size() ? masks.at(channels) : 0;
}

void writeFormatChunk(ByteWriter& out, const WavFormat& format) {
  const bool extensible = format.channels > 2;
  const auto frame = static_cast<std::uint16_t>(format.bytesPerFrame());
  out.text("fmt ");
  out.little(formatSize(format));
  out.little(extensible ? formatTagExtensible : formatTagPcm);
  out.little(format.channels);
  out.little(format.sampleRate);
  out.little(static_cast<std::uint32_t>(format.sampleRate * format.bytesPerFrame()));
  out.little(frame);
  out.little(bitsPerSample);
  if (!extensible) {
    return;
  }
  out.little(std::uint16_t{22});  // what follows
  out.little(bitsPerSample);      // all of them valid
  out.little(channelMask(format.channels));
  out.little(formatTagPcm);
  out.text(std::string_view("\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 14));  // rest of the GUID
}

}  // namespace

std::size_t wavHeaderSize(const WavFormat& format) {
  return riffHeaderSize + chunkHeaderSize + ds64Size + chunkHeaderSize + formatSize(format) +
         chunkHeaderSize;
}

void writeWavHeader(ByteWriter& out, const WavFormat& format, std::uint64_t dataSize) {
  const std::uint64_t riffSize = wavHeaderSize(format) - chunkHeaderSize + dataSize;
  const bool large = riffSize >= sizeIsElsewhere;
  out.text(large ? "RF64" : "RIFF");
  out.little(large ? sizeIsElsewhere : static_cast<std::uint32_t>(riffSize));
  out.text("WAVE");
  out.text(large ? "ds64" : "JUNK");
  out.little(ds64Size);
  if (large) {
    out.little(riffSize);
    out.little(dataSize);
    out.little(dataSize / format.bytesPerFrame());
    out.little(std::uint32_t{0});  // no table of further sizes
  } else {
    out.zeros(ds64Size);
  }
  writeFormatChunk(out, format);
  out.text("data");
  out.little(large ? sizeIsElsewhere : static_cast<std::uint32_t>(dataSize));
}

std::optional<WavHeader> readWavHeader(std::span<const std::byte> bytes) {
  constexpr std::size_t formatPosition =
      riffHeaderSize + chunkHeaderSize + ds64Size + chunkHeaderSize;
  const WavFormat format = {.sampleRate = littleAt<std::uint32_t>(bytes, formatPosition + 4),
                            .channels = littleAt<std::uint16_t>(bytes, formatPosition + 2)};
  const std::size_t size = wavHeaderSize(format);
  if (format.sampleRate == 0 || format.channels == 0 ||
      format.channels > WavFormat::maximumChannels || bytes.size() < size) {
    return std::nullopt;
  }
  const auto small = littleAt<std::uint32_t>(bytes, size - 4);
  constexpr std::size_t largePosition = riffHeaderSize + chunkHeaderSize + 8;
  const std::uint64_t dataSize =
      small == sizeIsElsewhere ? littleAt<std::uint64_t>(bytes, largePosition) : small;
  ByteWriter expected;
  writeWavHeader(expected, format, dataSize);
  if (dataSize % format.bytesPerFrame() != 0 ||
      !std::ranges::equal(bytes.first(size), expected.bytes())) {
    return std::nullopt;
  }
  return WavHeader{format, dataSize};
}

}  // namespace audrel::linuxos
