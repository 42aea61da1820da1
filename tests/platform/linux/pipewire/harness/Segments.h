#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Stamp.h"

/// What a recording is made of.
namespace audrel::pwtest {

/// Interleaved stereo.
using Audio = std::vector<float>;

inline std::size_t framesOf(std::span<const float> audio) {
  return audio.size() / 2;
}

/// Frames that belong together.
struct Segment {
  enum class Kind {
    stamped,  ///< exactly the frames of one stream from `first` on
    silence,  ///< digital zeros
    foreign,  ///< anything else
  };

  Kind kind;
  std::size_t begin = 0;   ///< in frames of the recording
  std::size_t length = 0;  ///< in frames
  StampPosition first;     ///< of stamped segments

  bool operator==(const Segment&) const = default;
  std::size_t end() const { return begin + length; }
  std::uint64_t endPosition() const { return first.position + length; }
};

/// The recording, cut up completely. A stamped segment has at least two frames.
std::vector<Segment> segmentsOf(std::span<const float> audio);

/// The segments of one stream, in their order.
std::vector<Segment> segmentsOfStream(const std::vector<Segment>& segments, std::uint32_t stream);

/// Without the silence at the start, if that is no longer than 4096 frames: the first cycles of a
/// recording may come before the links carry audio.
std::vector<Segment> withoutLead(std::vector<Segment> segments);

bool hasKind(const std::vector<Segment>& segments, Segment::Kind kind);

/// Subtracts the frames of a stream which play without a break from `from` on, where the first is
/// `first`, to the end.
void subtractStream(Audio& audio, std::size_t from, StampPosition first);

/// For a test's message.
std::string describe(const std::vector<Segment>& segments);
void PrintTo(const Segment& segment, std::ostream* stream);

}  // namespace audrel::pwtest
