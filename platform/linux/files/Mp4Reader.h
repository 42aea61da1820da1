#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/files/Mp4Boxes.h"

/// Reads back the boxes of an M4A file that `Mp4Boxes.h` writes, and nothing else: what differs
/// from them in one byte is none of ours. No number is trusted, and none read beyond the bytes
/// given.
namespace audrel::linuxos::mp4 {

/// The most bytes that a file of ours needs for what stands before its fragments.
constexpr std::size_t mostOfABeginning = 4096;

/// What stands before the fragments.
struct Beginning {
  Track track;
  std::vector<std::byte> bytes;  ///< as they are before the file is finished

  /// Where the index of a plain file should begin; nothing where it is a fragmented one.
  std::optional<std::uint64_t> movie;
};

/// Of the first bytes of a file, `mostOfABeginning` or all; nothing when it is none of ours.
std::optional<Beginning> readBeginning(std::span<const std::byte> bytes);

/// How many packets the fragment tells that begins with the first `fragmentHeadSize(0)` bytes
/// given.
std::uint32_t packetCount(std::span<const std::byte> head);

/// Their sizes, from the whole head; nothing when it is not the one that belongs to this `sequence`
/// number and `time`.
std::optional<std::vector<std::uint16_t>> readFragmentHead(std::span<const std::byte> head,
                                                           std::uint32_t sequence,
                                                           std::uint64_t time);

/// The header of a box, of which 16 bytes are given unless the file ends before.
struct BoxHeader {
  std::string type;
  std::uint64_t size = 0;  ///< header included; less than 8 where it is no box
};
BoxHeader readBoxHeader(std::span<const std::byte> bytes);

/// The length that a `moov` tells, of whose bytes the first `movieHeaderSize` are given.
struct MovieLength {
  std::uint64_t frames = 0;
  std::uint32_t sampleRate = 0;
};
constexpr std::size_t movieHeaderSize = 8 + 120;
std::optional<MovieLength> readMovieLength(std::span<const std::byte> movie);

}  // namespace audrel::linuxos::mp4
