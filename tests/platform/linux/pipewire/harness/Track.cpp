#include "tests/platform/linux/pipewire/harness/Track.h"

#include <vector>

namespace audrel::pwtest {

namespace {

/// Where the stream would have begun in a recording that goes back far enough.
std::uint64_t origin(const Segment& segment) {
  return segment.begin - segment.first.position;  // wraps around
}

bool isHalf(const Audio& audio, std::size_t frame, StampPosition position) {
  const StampedFrame expected = stamp(position);
  const float left = audio[2 * frame];
  const float right = audio[2 * frame + 1];
  return (left == asFloat(expected.left) && right == 0) ||
         (left == 0 && right == asFloat(expected.right));
}

bool isHalfLinkedStart(const Audio& audio, const Segment& segment, const Segment& stream) {
  constexpr std::size_t longest = 2048;
  if (segment.kind != Segment::Kind::foreign || stream.kind != Segment::Kind::stamped ||
      segment.length > longest || segment.length > stream.first.position) {
    return false;
  }
  for (std::size_t frame = segment.begin; frame < segment.end(); ++frame) {
    if (!isHalf(audio, frame, {stream.first.stream, frame - origin(stream)})) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::optional<Track> onlyTrack(const Audio& audio, std::string* problem) {
  const std::vector<Segment> segments = segmentsOf(audio);
  *problem = describe(segments);
  std::optional<Track> track;
  std::uint64_t trackOrigin = 0;
  for (const Segment& segment : segments) {
    if (segment.kind == Segment::Kind::foreign) {
      return std::nullopt;
    }
    if (segment.kind == Segment::Kind::silence) {
      continue;
    }
    if (!track) {
      track = Track{.begin = segment.begin, .end = segment.begin, .first = segment.first};
      trackOrigin = origin(segment);
    }
    if (segment.first.stream != track->first.stream || origin(segment) != trackOrigin) {
      return std::nullopt;
    }
    track->silent += segment.begin - track->end;
    track->end = segment.end();
  }
  return track;
}

void remove(const Track& track, Audio& audio) {
  for (std::size_t frame = track.begin; frame < track.end; ++frame) {
    float& left = audio[2 * frame];
    float& right = audio[2 * frame + 1];
    if (left != 0 || right != 0) {
      const StampedFrame expected =
          stamp({track.first.stream, track.first.position + (frame - track.begin)});
      left -= asFloat(expected.left);
      right -= asFloat(expected.right);
    }
  }
}

void removeHalfLinkedStarts(Audio& audio) {
  const std::vector<Segment> segments = segmentsOf(audio);
  for (std::size_t i = 0; i + 1 < segments.size(); ++i) {
    if (isHalfLinkedStart(audio, segments[i], segments[i + 1])) {
      for (std::size_t sample = 2 * segments[i].begin; sample < 2 * segments[i].end(); ++sample) {
        audio[sample] = 0;
      }
    }
  }
}

}  // namespace audrel::pwtest
