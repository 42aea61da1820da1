#include "platform/linux/files/Mp4Reader.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "platform/linux/files/ByteReader.h"

namespace audrel::linuxos::mp4 {
namespace {

using Bytes = std::span<const std::byte>;

/// What is in the first box of a type among boxes that follow one another; empty when there is
/// none, or it ends beyond the bytes.
Bytes contentOf(Bytes boxes, std::string_view type) {
  while (boxes.size() >= boxHeaderSize) {
    const auto size = bigAt<std::uint32_t>(boxes, 0);
    if (size < boxHeaderSize || size > boxes.size()) {
      break;
    }
    if (lettersAt(boxes, 4) == type) {
      return boxes.subspan(boxHeaderSize, size - boxHeaderSize);
    }
    boxes = boxes.subspan(size);
  }
  return {};
}

/// The AudioSpecificConfig of an `esds`, in the descriptor at `position`.
std::vector<std::byte> configurationAt(Bytes stream, std::size_t position) {
  std::size_t size = 0;
  for (std::size_t i = 1; i <= 4; ++i) {
    size = size << 7U | (bigAt<std::uint8_t>(stream, position + i) & 0x7FU);
  }
  const Bytes rest = after(stream, position + 5);
  const Bytes configuration = rest.first(std::min(size, rest.size()));
  return {configuration.begin(), configuration.end()};
}

/// What the `moov` in front of fragments tells, if it is one.
Track trackIn(Bytes movie) {
  const Bytes track = contentOf(movie, "trak");
  const Bytes media = contentOf(track, "mdia");
  const Bytes table = contentOf(contentOf(media, "minf"), "stbl");
  const Bytes entry = contentOf(after(contentOf(table, "stsd"), 8), "mp4a");
  const Bytes stream = contentOf(after(entry, 28), "esds");
  return {.sampleRate = bigAt<std::uint32_t>(contentOf(media, "mdhd"), 12),
          .channels = bigAt<std::uint16_t>(entry, 16),
          .bitRate = bigAt<std::uint32_t>(stream, 26),
          .framesPerPacket = bigAt<std::uint32_t>(contentOf(contentOf(movie, "mvex"), "trex"), 12),
          .initialPadding = bigAt<std::uint32_t>(contentOf(contentOf(track, "edts"), "elst"), 12),
          .configuration = configurationAt(stream, 30)};
}

/// Where the data ends that begins at `commitOffset`, by a header that finishing writes there.
std::optional<std::uint64_t> endOfData(Bytes bytes) {
  const auto [type, size] = readBoxHeader(bytes.subspan(commitOffset));
  ByteWriter expected;
  writeBoxHeader(expected, "mdat", size);
  const bool isOurs =
      std::ranges::equal(expected.bytes(), bytes.subspan(commitOffset, expected.size()));
  if (!isOurs || size > std::numeric_limits<std::int64_t>::max()) {
    return std::nullopt;
  }
  return commitOffset + size;
}

}  // namespace

std::optional<Beginning> readBeginning(Bytes bytes) {
  const Track track = trackIn(after(bytes, commitOffset + 2 * boxHeaderSize));
  if (track.sampleRate == 0 || track.channels == 0 || track.framesPerPacket == 0) {
    return std::nullopt;
  }
  ByteWriter out;
  writeBeginning(out, track);
  const Bytes expected = out.bytes();
  const auto areEqual = [&](std::size_t from, std::size_t to) {
    return std::ranges::equal(bytes.subspan(from, to - from), expected.subspan(from, to - from));
  };
  constexpr std::size_t commitEnd = commitOffset + commitSize;
  if (bytes.size() < expected.size() || !areEqual(0, commitOffset) ||
      !areEqual(commitEnd, expected.size())) {
    return std::nullopt;
  }
  Beginning beginning{track, {expected.begin(), expected.end()}, {}};
  if (!areEqual(commitOffset, commitEnd)) {
    beginning.movie = endOfData(bytes);
    if (!beginning.movie || *beginning.movie < expected.size()) {
      return std::nullopt;
    }
  }
  return beginning;
}

std::uint32_t packetCount(Bytes head) {
  constexpr std::size_t position = 80;  // in the `trun`
  return bigAt<std::uint32_t>(head, position);
}

std::optional<std::vector<std::uint16_t>> readFragmentHead(Bytes head, std::uint32_t sequence,
                                                           std::uint64_t time) {
  constexpr std::size_t firstSize = 88;
  std::vector<std::uint16_t> sizes;
  for (std::uint32_t i = 0; fragmentHeadSize(sizes.size()) < head.size(); ++i) {
    const auto size = bigAt<std::uint32_t>(head, firstSize + 4 * std::size_t{i});
    if (size == 0 || size > std::numeric_limits<std::uint16_t>::max()) {
      return std::nullopt;
    }
    sizes.push_back(static_cast<std::uint16_t>(size));
  }
  ByteWriter expected;
  writeFragmentHead(expected, sequence, time, sizes);
  return std::ranges::equal(expected.bytes(), head) ? std::optional(std::move(sizes))
                                                    : std::nullopt;
}

BoxHeader readBoxHeader(Bytes bytes) {
  BoxHeader header{lettersAt(bytes, 4), bigAt<std::uint32_t>(bytes, 0)};
  if (header.size == 1) {
    header.size = bigAt<std::uint64_t>(bytes, boxHeaderSize);
    if (header.size < 2 * boxHeaderSize) {
      header.size = 0;
    }
  }
  return header;
}

std::optional<MovieLength> readMovieLength(Bytes movie) {
  const Bytes header = contentOf(after(movie, boxHeaderSize), "mvhd");
  const auto version = bigAt<std::uint8_t>(header, 0);
  MovieLength length;
  if (version == 0) {
    length = {bigAt<std::uint32_t>(header, 16), bigAt<std::uint32_t>(header, 12)};
  } else if (version == 1) {
    length = {bigAt<std::uint64_t>(header, 24), bigAt<std::uint32_t>(header, 20)};
  }
  return length.sampleRate > 0 ? std::optional(length) : std::nullopt;
}

}  // namespace audrel::linuxos::mp4
