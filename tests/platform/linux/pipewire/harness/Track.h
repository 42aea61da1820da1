#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Segments.h"

namespace audrel::pwtest {

/// One stream as it stands in a recording: every frame of it exactly where it belongs, or silence
/// in its place.
struct Track {
  std::size_t begin = 0;   ///< its first frame, in frames of the recording
  std::size_t end = 0;     ///< after its last frame
  StampPosition first{};   ///< what stands at `begin`
  std::size_t silent = 0;  ///< frames in between in whose place there is silence
  /// Frames of the graph in between in which the stream did not play.
  std::uint64_t unplayed = 0;
};

/// When a stream played: from `frame` of the stream, which played at `graphPosition` of the graph's
/// own count of frames, to the next stretch, it played without a break.
struct Stretch {
  std::uint64_t graphPosition = 0;
  std::uint64_t frame = 0;

  bool operator==(const Stretch&) const = default;
};

/// The only stream of a recording that holds nothing else but silence. Nothing, and `problem` set,
/// when something else is in it, or a frame is not in its place.
std::optional<Track> onlyTrack(const Audio& audio, std::string* problem);

/// The same of a stream that did not play without a break: every frame must stand at the time when
/// it was played.
std::optional<Track> onlyTrack(const Audio& audio, const std::vector<Stretch>& stretches,
                               std::string* problem);

/// Whether all that is missing of the track was not played, or is part of the frames that were
/// reported as lost (which may be of cycles in which nothing was played).
bool isExactButFor(const Track& track, std::uint64_t lostFrames);

/// How a stream reached a recording of a starved machine. There the player's own queue may hold its
/// audio back by some cycles, of which the player knows nothing: a frame may stand later than it
/// would without, but never earlier, since time must not run short.
struct Delivery {
  std::size_t begin = 0;      ///< its first frame, in frames of the recording
  std::uint64_t missing = 0;  ///< frames of the stream that are not there
  std::uint64_t silent = 0;   ///< frames of silence between those that are
  std::uint64_t torn = 0;     ///< frames that are neither
};

/// Of the only stream of a recording. Nothing, and `problem` set, when there is none or another one
/// too, or a frame stands before its turn or too early.
std::optional<Delivery> deliveryOf(const Audio& audio, std::string* problem);

/// Takes a track out of a recording. Frames that are silent stay so.
void remove(const Track& track, Audio& audio);

/// Silences what came of a stream's first cycles while one of its two channels was not yet linked:
/// up to `longestLead` before it in which one channel is exactly what it should be, and the other
/// silent.
void removeHalfLinkedStarts(Audio& audio);

}  // namespace audrel::pwtest
