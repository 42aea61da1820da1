#include "platform/linux/files/M4aWriter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <utility>

namespace audrel::linuxos {
namespace {

constexpr std::size_t maximumPacketSize = 0xFFFF;
constexpr std::size_t maximumAacBytes = 768;  // of a packet, for each channel

// A second and a half: what is older than three is then safe, on a disk that keeps up.
constexpr std::size_t fragmentsPerFlush = 3;

std::size_t halfASecond(const mp4::Track& track) {
  return std::clamp<std::size_t>(track.sampleRate / 2 / track.framesPerPacket, 1,
                                 mp4::mostPacketsInFragment);
}

}  // namespace

M4aWriter::M4aWriter(BlockFile file, mp4::Track track, SilenceSource silence)
    : file_(std::move(file)),
      track_(std::move(track)),
      silence_(std::move(silence)),
      packetsPerFragment_(halfASecond(track_)),
      headRoom_(mp4::fragmentHeadSize(packetsPerFragment_)),
      fragment_(headRoom_) {
  fragment_.reserve(headRoom_ + packetsPerFragment_ * maximumAacBytes * track_.channels);
  sizes_.reserve(packetsPerFragment_);
  file_.flushEvery(fragmentsPerFlush);
}

int M4aWriter::start() {
  ByteWriter out;
  mp4::writeBeginning(out, track_);
  const auto replaced = out.bytes().subspan(mp4::commitOffset, mp4::commitSize);
  replaced_.assign(replaced.begin(), replaced.end());
  return file_.begin(out.bytes());
}

std::optional<BlockFile::Failure> M4aWriter::add(std::span<const std::byte> packet) {
  if (packet.size() > maximumPacketSize) {
    return BlockFile::Failure{EMSGSIZE, true};
  }
  fragment_.insert(fragment_.end(), packet.begin(), packet.end());
  sizes_.push_back(static_cast<std::uint16_t>(packet.size()));
  return sizes_.size() < packetsPerFragment_ ? std::nullopt : writeFragment();
}

std::optional<BlockFile::Failure> M4aWriter::writeFragment() {
  std::optional<BlockFile::Failure> failure;
  try {
    failure = writeOwedSilence();
    if (!failure || !failure->dropped) {
      const std::size_t unused = headRoom_ - mp4::fragmentHeadSize(sizes_.size());
      const auto ownFailure = appendFragment(sizes_, std::span(fragment_).subspan(unused));
      failure = ownFailure ? ownFailure : failure;
    }
  } catch (const std::bad_alloc&) {
    failure = BlockFile::Failure{ENOMEM, true};
  }
  if (failure && failure->dropped) {
    owedSilence_ += sizes_.size();
  }
  fragment_.resize(headRoom_);
  sizes_.clear();
  return failure;
}

std::optional<BlockFile::Failure> M4aWriter::writeOwedSilence() {
  if (owedSilence_ == 0) {
    return std::nullopt;
  }
  const std::vector<std::byte> packet = silence_();
  if (packet.empty() || packet.size() > maximumPacketSize) {
    return BlockFile::Failure{ENOMEM, true};
  }
  std::optional<BlockFile::Failure> failure;
  while (owedSilence_ > 0) {
    const std::size_t count = std::min<std::uint64_t>(owedSilence_, mp4::mostPacketsInFragment);
    const std::vector<std::uint16_t> sizes(count, static_cast<std::uint16_t>(packet.size()));
    std::vector<std::byte> block(mp4::fragmentHeadSize(count));
    for (std::size_t i = 0; i < count; ++i) {
      block.insert(block.end(), packet.begin(), packet.end());
    }
    silences_.reserve(silences_.size() + 1);
    if (auto blockFailure = appendFragment(sizes, block)) {
      failure = blockFailure;
      if (failure->dropped) {
        break;
      }
    }
    silences_.push_back({index_.sizes().size() - count, count});
    owedSilence_ -= count;
  }
  return failure;
}

std::optional<BlockFile::Failure> M4aWriter::appendFragment(std::span<const std::uint16_t> sizes,
                                                            std::span<std::byte> block) {
  head_.clear();
  mp4::writeFragmentHead(head_, sequence_ + 1, index_.sizes().size() * track_.framesPerPacket,
                         sizes);
  std::ranges::copy(head_.bytes(), block.begin());
  const std::uint64_t packets = file_.end() + head_.size();
  try {
    index_.add(packets, sizes);
  } catch (const std::bad_alloc&) {
    index_.forgetFrom(packets);
    throw;
  }
  const auto failure = file_.append(block);
  if (failure && failure->dropped) {
    index_.forgetFrom(packets);
  } else {
    ++sequence_;
  }
  return failure;
}

M4aWriter::Ending M4aWriter::finish(std::uint64_t frames) {
  if (!sizes_.empty()) {
    static_cast<void>(writeFragment());  // should it wait now, then settling tells why
  }
  const auto settling = file_.settle();
  index_.forgetFrom(file_.end());

  Ending ending;
  ending.frames = std::min(frames, mp4::playableFrames(track_, index_.sizes().size()));
  ending.silenced = silencedFrames();
  const bool isIndexable = !settling || (settling->dropped && file_.end() > 0);
  const int indexing = isIndexable ? writeIndex(ending.frames) : settling->code;
  const int closing = file_.close();
  ending.indexed = indexing == 0;
  ending.code = settling ? settling->code : indexing != 0 ? indexing : closing;
  return ending;
}

/// Those that are in the file.
std::uint64_t M4aWriter::silencedFrames() const {
  const std::uint64_t packets = index_.sizes().size();
  std::uint64_t silenced = 0;
  for (const Silence& silence : silences_) {
    const std::uint64_t end = std::min(packets, silence.first + silence.count);
    silenced += end - std::min(end, silence.first);
  }
  return silenced * track_.framesPerPacket;
}

int M4aWriter::writeIndex(std::uint64_t frames) {
  const std::uint64_t movie = file_.end() + mp4::boxHeaderSize;
  try {
    ByteWriter out;
    mp4::writeHiddenMovie(out, track_, index_, frames);
    if (const int code = file_.appendSafely(out.bytes()); code != 0) {
      return code;
    }
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
  return commit(movie);
}

int M4aWriter::commit(std::uint64_t movie) {
  ByteWriter out;
  mp4::writeCommit(out, movie);
  const int code = file_.overwriteSafely(mp4::commitOffset, out.bytes());
  if (code != 0) {
    static_cast<void>(file_.overwrite(mp4::commitOffset, replaced_));  // no half of it may stay
  }
  return code;
}

}  // namespace audrel::linuxos
