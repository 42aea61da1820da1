#include "tests/platform/linux/pipewire/harness/Segments.h"

#include <algorithm>
#include <ostream>
#include <sstream>

namespace audrel::pwtest {

namespace {

bool isSilent(std::span<const float> audio, std::size_t frame) {
  return audio[2 * frame] == 0 && audio[2 * frame + 1] == 0;
}

bool isStamp(std::span<const float> audio, std::size_t frame, StampPosition position) {
  const StampedFrame expected = stamp(position);
  return audio[2 * frame] == asFloat(expected.left) &&
         audio[2 * frame + 1] == asFloat(expected.right);
}

Segment silenceAt(std::span<const float> audio, std::size_t begin) {
  std::size_t end = begin;
  while (end < framesOf(audio) && isSilent(audio, end)) {
    ++end;
  }
  return {.kind = Segment::Kind::silence, .begin = begin, .length = end - begin, .first = {}};
}

/// Of length 0 when no stamped segment starts there.
Segment stampedSegmentAt(std::span<const float> audio, std::size_t begin) {
  Segment segment{.kind = Segment::Kind::stamped, .begin = begin, .length = 0, .first = {}};
  const auto frame = asStampedFrame(audio[2 * begin], audio[2 * begin + 1]);
  if (!frame) {
    return segment;
  }
  segment.first = unstamp(*frame);
  while (segment.end() < framesOf(audio) &&
         isStamp(audio, segment.end(), {segment.first.stream, segment.endPosition()})) {
    ++segment.length;
  }
  if (segment.length < 2) {
    segment.length = 0;
  }
  return segment;
}

}  // namespace

Segment stampedSegment(std::size_t begin, std::size_t length, StampPosition first) {
  return {.kind = Segment::Kind::stamped, .begin = begin, .length = length, .first = first};
}

Segment silentSegment(std::size_t begin, std::size_t length) {
  return {.kind = Segment::Kind::silence, .begin = begin, .length = length, .first = {}};
}

std::vector<Segment> segmentsOf(std::span<const float> audio) {
  std::vector<Segment> segments;
  for (std::size_t at = 0; at < framesOf(audio);) {
    Segment segment = isSilent(audio, at) ? silenceAt(audio, at) : stampedSegmentAt(audio, at);
    if (segment.length > 0) {
      segments.push_back(segment);
      at = segment.end();
      continue;
    }
    if (segments.empty() || segments.back().kind != Segment::Kind::foreign) {
      segments.push_back({.kind = Segment::Kind::foreign, .begin = at, .length = 0, .first = {}});
    }
    ++segments.back().length;
    ++at;
  }
  return segments;
}

std::vector<Segment> segmentsWithoutLead(std::span<const float> audio) {
  std::vector<Segment> segments = segmentsOf(audio);
  if (!segments.empty() && segments.front().kind == Segment::Kind::silence &&
      segments.front().length <= longestLead) {
    segments.erase(segments.begin());
  }
  return segments;
}

bool hasKind(const std::vector<Segment>& segments, Segment::Kind kind) {
  return std::ranges::any_of(segments,
                             [&](const Segment& segment) { return segment.kind == kind; });
}

void PrintTo(const Segment& segment, std::ostream* stream) {
  *stream << segment.begin << "+" << segment.length << " ";
  switch (segment.kind) {
    case Segment::Kind::stamped:
      *stream << "stream " << segment.first.stream << " from " << segment.first.position;
      break;
    case Segment::Kind::silence:
      *stream << "silence";
      break;
    case Segment::Kind::foreign:
      *stream << "foreign";
      break;
  }
}

std::string describe(const std::vector<Segment>& segments) {
  constexpr std::size_t most = 40;
  std::ostringstream text;
  for (std::size_t i = 0; i < std::min(segments.size(), most); ++i) {
    PrintTo(segments[i], &text);
    text << "; ";
  }
  if (segments.size() > most) {
    text << "... (" << segments.size() << " segments)";
  }
  return text.str();
}

}  // namespace audrel::pwtest
