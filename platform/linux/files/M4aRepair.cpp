#include "platform/linux/files/M4aRepair.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <numeric>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/linux/files/Mp4Reader.h"

namespace audrel::linuxos {
namespace {

using Outcome = capture::Repair::Outcome;

/// The index counts the bytes of its boxes with 32 bits. Two months at 48 kHz.
constexpr std::size_t mostPackets = std::size_t{1} << 28U;

/// The whole fragments that follow one another.
struct Fragments {
  PacketIndex index;
  std::uint64_t end = 0;  ///< in the file
};

struct Box {
  std::string type;
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};

/// The box at `offset`, if the file has all of it.
std::optional<Box> wholeBoxAt(const CheckedFile& file, std::uint64_t offset) {
  const auto [type, size] = mp4::readBoxHeader(file.read(offset, 2 * mp4::boxHeaderSize));
  if (size < mp4::boxHeaderSize || offset > file.size() || size > file.size() - offset) {
    return std::nullopt;
  }
  return Box{type, offset, offset + size};
}

/// The sizes of a fragment's packets if it is the one that is to stand at `offset`, and whole.
std::optional<std::vector<std::uint16_t>> fragmentAt(const CheckedFile& file, std::uint64_t offset,
                                                     std::uint32_t sequence, std::uint64_t time) {
  const std::size_t count = mp4::packetCount(file.read(offset, mp4::fragmentHeadSize(0)));
  if (count == 0 || count > mp4::mostPacketsInFragment) {
    return std::nullopt;
  }
  const auto head = file.read(offset, mp4::fragmentHeadSize(count));
  auto sizes = head.size() == mp4::fragmentHeadSize(count)
                   ? mp4::readFragmentHead(head, sequence, time)
                   : std::nullopt;
  if (sizes && std::accumulate(sizes->begin(), sizes->end(), offset + head.size()) > file.size()) {
    return std::nullopt;
  }
  return sizes;
}

Fragments wholeFragments(const CheckedFile& file, const mp4::Track& track, std::uint64_t begin) {
  Fragments found{.index = {}, .end = begin};
  for (std::uint32_t sequence = 1;; ++sequence) {
    const std::uint64_t packets = found.index.sizes().size();
    const auto sizes = fragmentAt(file, found.end, sequence, packets * track.framesPerPacket);
    if (!sizes) {
      return found;
    }
    if (packets + sizes->size() > mostPackets) {
      throw std::system_error(EFBIG, std::generic_category());
    }
    const std::uint64_t data = found.end + mp4::fragmentHeadSize(sizes->size());
    found.index.add(data, *sizes);
    found.end = std::accumulate(sizes->begin(), sizes->end(), data);
  }
}

/// Whether readers come to further fragments behind what is none at `offset`. Then it was not torn
/// but changed since, and what they play of those would be lost.
bool hasFragmentsBehind(const CheckedFile& file, std::uint64_t offset) {
  constexpr int most = 1000;  // a fragment is two; somebody could have written no end of them
  auto box = wholeBoxAt(file, offset);
  for (int count = 1; box && count < most; ++count) {
    box = wholeBoxAt(file, box->end);
    if (box && box->type == "moof") {
      return true;
    }
  }
  return false;
}

/// Whether bytes at `offset` of the file, the packets of a fragment, are missing: a power failure
/// can leave zeros in the place of blocks. The last byte of an AAC packet is never zero, and there
/// is no such run of zeros in one.
bool hasHole(std::span<const std::byte> data, std::uint64_t offset) {
  constexpr std::size_t smallestBlock = 512;
  const auto isZero = [](std::byte byte) { return byte == std::byte{0}; };
  if (data.empty() || isZero(data.back())) {
    return true;
  }
  for (std::size_t begin = (smallestBlock - offset % smallestBlock) % smallestBlock;
       begin + smallestBlock <= data.size(); begin += smallestBlock) {
    if (std::ranges::all_of(data.subspan(begin, smallestBlock), isZero)) {
      return true;
    }
  }
  return false;
}

/// Leaves out the fragments at the end that have holes. A hole before others stays: leaving it out
/// would cost what follows.
void leaveOutHoles(const CheckedFile& file, Fragments& fragments) {
  while (!fragments.index.runs().empty()) {
    const auto [offset, packets] = fragments.index.runs().back();
    const auto data = file.read(offset, fragments.end - offset);
    if (!hasHole(data, offset)) {
      return;
    }
    fragments.end = offset - mp4::fragmentHeadSize(packets);
    fragments.index.limit(fragments.index.sizes().size() - packets);
  }
}

/// Whether the file has these bytes at `offset`.
bool hasAt(const CheckedFile& file, std::uint64_t offset, std::span<const std::byte> bytes) {
  return std::ranges::equal(file.read(offset, bytes.size()), bytes);
}

struct Index {
  std::uint64_t movie = 0;  ///< where it begins
  std::uint64_t frames = 0;
};

/// The index in the `free` box at `offset`, if it is the one that finishing this file would have
/// written, to the file's end.
std::optional<Index> hiddenIndexAt(const CheckedFile& file, std::uint64_t offset,
                                   const mp4::Track& track, const PacketIndex& index) {
  const std::uint64_t movie = offset + mp4::boxHeaderSize;
  const auto length = mp4::readMovieLength(file.read(movie, mp4::movieHeaderSize));
  if (!length || length->frames > mp4::playableFrames(track, index.sizes().size())) {
    return std::nullopt;
  }
  PacketIndex needed = index;
  ByteWriter expected;
  mp4::writeHiddenMovie(expected, track, needed, length->frames);
  if (file.size() - offset != expected.size() || !hasAt(file, offset, expected.bytes())) {
    return std::nullopt;
  }
  return Index{movie, length->frames};
}

/// The same, behind the fragments or behind what else a killed repair has put into a `free` box.
std::optional<Index> hiddenIndex(const CheckedFile& file, const mp4::Track& track,
                                 const Fragments& fragments) {
  if (auto index = hiddenIndexAt(file, fragments.end, track, fragments.index)) {
    return index;
  }
  const auto unused = wholeBoxAt(file, fragments.end);
  return unused && unused->type == "free" ? hiddenIndexAt(file, unused->end, track, fragments.index)
                                          : std::nullopt;
}

/// Makes what follows the fragments one `free` box, which readers skip. It may grow by some bytes:
/// that is its header.
void coverTail(CheckedFile& file, std::uint64_t begin) {
  if (begin == file.size()) {
    return;
  }
  ByteWriter header;
  mp4::writeBoxHeader(header, "free",
                      std::max<std::uint64_t>(file.size() - begin, mp4::boxHeaderSize));
  if (!hasAt(file, begin, header.bytes())) {
    file.writeDurably(begin, header.bytes());
  }
}

Index appendIndex(CheckedFile& file, const mp4::Track& track, Fragments& fragments) {
  const std::uint64_t frames = mp4::playableFrames(track, fragments.index.sizes().size());
  coverTail(file, fragments.end);
  const Index index{file.size() + mp4::boxHeaderSize, frames};
  ByteWriter out;
  mp4::writeHiddenMovie(out, track, fragments.index, frames);
  file.writeDurably(file.size(), out.bytes());
  return index;
}

capture::Repair told(Outcome outcome, const mp4::MovieLength& length) {
  return {.outcome = outcome,
          .seconds = static_cast<double>(length.frames) / length.sampleRate,
          .problem = {}};
}

/// What there is to tell of a file with its index where it should be; nothing when that is torn.
std::optional<capture::Repair> ofPlainFile(const CheckedFile& file, std::uint64_t movie) {
  const auto box = wholeBoxAt(file, movie);
  if (!box) {
    return std::nullopt;
  }
  const auto length = mp4::readMovieLength(file.read(movie, mp4::movieHeaderSize));
  return box->type == "moov" && length ? told(Outcome::whole, *length)
                                       : capture::Repair{.outcome = Outcome::notOurs};
}

}  // namespace

std::optional<capture::Repair> repairM4a(CheckedFile& file) {
  const auto beginning = mp4::readBeginning(file.read(0, mp4::mostOfABeginning));
  if (!beginning) {
    return std::nullopt;
  }
  const mp4::Track& track = beginning->track;
  if (beginning->movie) {
    if (const auto told = ofPlainFile(file, *beginning->movie)) {
      return told;
    }
  }
  Fragments fragments = wholeFragments(file, track, beginning->bytes.size());
  if (hasFragmentsBehind(file, fragments.end)) {
    return std::nullopt;
  }
  if (beginning->movie) {
    // A power failure has kept the eight bytes and not the index that they count on.
    file.writeDurably(mp4::commitOffset,
                      std::span(beginning->bytes).subspan(mp4::commitOffset, mp4::commitSize));
  }
  leaveOutHoles(file, fragments);
  auto index = hiddenIndex(file, track, fragments);
  if (index) {
    file.sync();
  } else {
    index = appendIndex(file, track, fragments);
  }
  ByteWriter commit;
  mp4::writeCommit(commit, index->movie);
  file.writeDurably(mp4::commitOffset, commit.bytes());
  return told(Outcome::repaired, {.frames = index->frames, .sampleRate = track.sampleRate});
}

}  // namespace audrel::linuxos
