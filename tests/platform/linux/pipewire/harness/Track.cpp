#include "tests/platform/linux/pipewire/harness/Track.h"

#include <algorithm>
#include <vector>

namespace audrel::pwtest {

namespace {

/// When a frame of a stream was played, in the graph's count of frames.
std::uint64_t graphPosition(const std::vector<Stretch>& stretches, std::uint64_t frame) {
  Stretch last;
  for (const Stretch& stretch : stretches) {
    if (stretch.frame <= frame) {
      last = stretch;
    }
  }
  return last.graphPosition + (frame - last.frame);
}

bool isHalf(const Audio& audio, std::size_t frame, StampPosition position) {
  const StampedFrame expected = stamp(position);
  const float left = audio[2 * frame];
  const float right = audio[2 * frame + 1];
  return (left == asFloat(expected.left) && right == 0) ||
         (left == 0 && right == asFloat(expected.right));
}

bool isHalfLinkedStart(const Audio& audio, const Segment& segment, const Segment& stream) {
  if (segment.kind != Segment::Kind::foreign || stream.kind != Segment::Kind::stamped ||
      segment.length > longestLead || segment.length > stream.first.position) {
    return false;
  }
  for (std::size_t frame = segment.begin; frame < segment.end(); ++frame) {
    if (!isHalf(audio, frame,
                {stream.first.stream, stream.first.position - (stream.begin - frame)})) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::optional<Track> onlyTrack(const Audio& audio, std::string* problem) {
  return onlyTrack(audio, {Stretch{}}, problem);
}

bool isExactButFor(const Track& track, std::uint64_t lostFrames) {
  return track.silent >= std::max(lostFrames, track.unplayed) &&
         track.silent <= lostFrames + track.unplayed;
}

std::optional<Track> onlyTrack(const Audio& audio, const std::vector<Stretch>& stretches,
                               std::string* problem) {
  const std::vector<Segment> segments = segmentsOf(audio);
  *problem = describe(segments);
  std::optional<Track> track;
  // Where in the recording the graph's count began; wraps around.
  std::uint64_t origin = 0;
  for (const Segment& segment : segments) {
    if (segment.kind == Segment::Kind::foreign) {
      return std::nullopt;
    }
    if (segment.kind == Segment::Kind::silence) {
      continue;
    }
    const std::uint64_t segmentOrigin =
        segment.begin - graphPosition(stretches, segment.first.position);
    if (!track) {
      track = Track{.begin = segment.begin, .end = segment.begin, .first = segment.first};
      origin = segmentOrigin;
    }
    if (segment.first.stream != track->first.stream || segmentOrigin != origin) {
      return std::nullopt;
    }
    track->silent += segment.begin - track->end;
    track->end = segment.end();
    track->unplayed = graphPosition(stretches, segment.endPosition() - 1) -
                      graphPosition(stretches, track->first.position) -
                      (segment.endPosition() - 1 - track->first.position);
  }
  return track;
}

std::optional<Delivery> deliveryOf(const Audio& audio, std::string* problem) {
  const std::vector<Segment> segments = segmentsOf(audio);
  *problem = describe(segments);
  Delivery delivery;
  const Segment* first = nullptr;
  const Segment* previous = nullptr;
  std::uint64_t tornSincePrevious = 0;
  for (const Segment& segment : segments) {
    if (segment.kind == Segment::Kind::foreign) {
      delivery.torn += segment.length;
      tornSincePrevious += segment.length;
      continue;
    }
    if (segment.kind == Segment::Kind::silence) {
      continue;
    }
    if (previous == nullptr) {
      first = &segment;
      delivery.begin = segment.begin;
    } else {
      const bool isInTurn = segment.first.stream == first->first.stream &&
                            segment.first.position >= previous->endPosition();
      const bool isTooEarly =
          segment.begin - first->begin < segment.first.position - first->first.position;
      if (!isInTurn || isTooEarly) {
        return std::nullopt;
      }
      delivery.missing += segment.first.position - previous->endPosition();
      delivery.silent += segment.begin - previous->end() - tornSincePrevious;
    }
    previous = &segment;
    tornSincePrevious = 0;
  }
  return previous == nullptr ? std::nullopt : std::optional(delivery);
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
