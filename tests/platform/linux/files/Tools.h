#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/RunTool.h"

/// Programs that read files independently of ours.
namespace audrel::linuxos::test {

using support::runTool;
using support::ToolResult;

/// What ffprobe says of the first stream; times in units of the sample rate.
struct Probe {
  std::string codec;
  std::int64_t sampleRate = 0;
  std::int64_t channels = 0;
  std::optional<std::int64_t> start;     ///< absent where nothing can play
  std::optional<std::int64_t> duration;  ///< absent where the file does not tell
};

Probe probe(const std::filesystem::path& file);

/// All that FFmpeg plays of a file, as interleaved floats. Any complaint of it throws.
/// `seekTo` in seconds.
std::vector<float> decode(const std::filesystem::path& file, double seekTo = 0);

/// The same of a file that may end in the middle of a packet.
std::vector<float> decodeTorn(const std::filesystem::path& file);

/// What GStreamer's demuxer plays of the media in an M4A file.
struct DemuxedSegment {
  std::uint64_t startNanoseconds = 0;
  std::uint64_t stopNanoseconds = 0;
};

DemuxedSegment demuxWithGStreamer(const std::filesystem::path& file);

}  // namespace audrel::linuxos::test
