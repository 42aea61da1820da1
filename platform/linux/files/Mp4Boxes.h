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

/// Of a box whose size 32 bits hold.
constexpr std::size_t boxHeaderSize = 8;

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

/// What stands before the fragments: `ftyp`, an empty `free`, and a `moov` with the track and no
/// packets.
void writeBeginning(ByteWriter& out, const Track& track);

/// Where the empty `free` stands, and how many bytes `writeCommit` may replace from there on.
constexpr std::size_t commitOffset = 32;
constexpr std::size_t commitSize = 16;

/// No fragment of ours has more.
constexpr std::size_t mostPacketsInFragment = 1024;

/// The `moof` of a fragment whose `mdat` follows directly, header included.
/// `sequence` counts fragments from 1; `time` is when the first packet's frames begin.
void writeFragmentHead(ByteWriter& out, std::uint32_t sequence, std::uint64_t time,
                       std::span<const std::uint16_t> packetSizes);

/// The bytes of the above for a number of packets.
std::size_t fragmentHeadSize(std::size_t packets);

/// The frames that a number of packets decode to, without the padding.
std::uint64_t playableFrames(const Track& track, std::uint64_t packets);

/// The `moov` of a plain file, hidden in a `free` box: the packets of `index` that are needed for
/// `frames` frames after the padding, which are playable. `index` is limited to them.
void writeHiddenMovie(ByteWriter& out, const Track& track, PacketIndex& index,
                      std::uint64_t frames);

/// What turns all between `commitOffset` and the hidden `moov` at `movie` into one box of data, and
/// so the file into a plain one.
void writeCommit(ByteWriter& out, std::uint64_t movie);

/// The header of a box of `size` bytes, itself included: 8 bytes, or 16 where 32 bits do not hold
/// the size.
void writeBoxHeader(ByteWriter& out, std::string_view type, std::uint64_t size);

}  // namespace audrel::linuxos::mp4
