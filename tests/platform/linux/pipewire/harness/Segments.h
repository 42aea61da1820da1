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

/// For a comparison with what a recording is cut up into.
Segment stampedSegment(std::size_t begin, std::size_t length, StampPosition first);
Segment silentSegment(std::size_t begin, std::size_t length);

/// The recording, cut up completely. A stamped segment has at least two frames.
std::vector<Segment> segmentsOf(std::span<const float> audio);

/// The longest silence, in frames, with which a recording or what a stream plays again may start:
/// cycles in which not everything is linked yet. Linking takes time, not frames: at twenty times
/// real time these are 25 ms.
inline constexpr std::size_t longestLead = 24'000;

/// The recording, cut up, without a silence at its start that is no longer than that.
std::vector<Segment> segmentsWithoutLead(std::span<const float> audio);

bool hasKind(const std::vector<Segment>& segments, Segment::Kind kind);

/// For a test's message.
std::string describe(const std::vector<Segment>& segments);
void PrintTo(const Segment& segment, std::ostream* stream);

}  // namespace audrel::pwtest
