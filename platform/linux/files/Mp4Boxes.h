#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/linux/files/ByteWriter.h"
#include "platform/linux/files/PacketIndex.h"

/// The boxes (ISO/IEC 14496-12 and -14) of an M4A file with one AAC track. Times are in frames of
/// the track's own rate, so that they are exact.
namespace audrel::linuxos::mp4 {

struct Track {
  std::uint32_t sampleRate = 0;
  std::uint16_t channels = 0;
  std::uint32_t bitRate = 0;             ///< nominal, bits per second
  std::uint32_t framesPerPacket = 0;     ///< frames that each packet decodes to
  std::uint32_t initialPadding = 0;      ///< frames at the start that are not part of the recording
  std::vector<std::byte> configuration;  ///< AudioSpecificConfig
};

/// Opens a box for the length of a scope; its size is filled in at the end.
class Box {
 public:
  Box(ByteWriter& out, std::string_view type);
  Box(const Box&) = delete;
  Box& operator=(const Box&) = delete;
  ~Box();

 private:
  ByteWriter& out_;
  std::size_t start_;
};

void writeFileType(ByteWriter& out);

/// The `moov` in front of fragments: the track, no packets.
void writeFragmentedMovie(ByteWriter& out, const Track& track);

/// The `moof` of a fragment whose `mdat` follows directly, header included.
/// `sequence` counts fragments from 1; `time` is when the first packet's frames begin.
void writeFragmentHead(ByteWriter& out, std::uint32_t sequence, std::uint64_t time,
                       std::span<const std::uint16_t> packetSizes);

/// The bytes of the above for a number of packets.
std::size_t fragmentHeadSize(std::size_t packets);

/// The `moov` of a plain file: every packet of `index`. Decoded, `frames` frames follow the
/// padding; at most as many as the packets hold. 0 means that there is no packet either.
void writeMovie(ByteWriter& out, const Track& track, const PacketIndex& index,
                std::uint64_t frames);

}  // namespace audrel::linuxos::mp4
