#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tests/platform/linux/pipewire/harness/Segments.h"

namespace audrel::pwtest {

/// One stream as it stands in a recording: every frame of it exactly where it belongs, or silence
/// in its place.
struct Track {
  std::size_t begin = 0;   ///< its first frame, in frames of the recording
  std::size_t end = 0;     ///< after its last frame
  StampPosition first;     ///< what stands at `begin`
  std::size_t silent = 0;  ///< frames in between in whose place there is silence
};

/// The only stream of a recording that holds nothing else but silence. Nothing, and `problem` set,
/// when something else is in it, or a frame is not in its place.
std::optional<Track> onlyTrack(const Audio& audio, std::string* problem);

/// Takes a track out of a recording. Frames that are silent stay so.
void remove(const Track& track, Audio& audio);

/// Silences what came of a stream's first cycles while one of its two channels was not yet linked:
/// up to 2048 frames before it in which one channel is exactly what it should be, and the other
/// silent.
void removeHalfLinkedStarts(Audio& audio);

}  // namespace audrel::pwtest
