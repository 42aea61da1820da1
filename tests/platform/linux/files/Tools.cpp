#include "tests/platform/linux/files/Tools.h"

#include <charconv>
#include <cstring>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

std::map<std::string, std::string> keysAndValues(const std::string& lines) {
  std::map<std::string, std::string> values;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    const auto equals = line.find('=');
    if (equals != std::string::npos) {
      values[line.substr(0, equals)] = line.substr(equals + 1);
    }
  }
  return values;
}

std::optional<std::int64_t> integer(const std::string& text) {
  std::int64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
    return std::nullopt;
  }
  return value;
}

std::uint64_t numberAfter(const std::string& text, std::string_view key) {
  const auto position = text.find(key);
  if (position == std::string::npos) {
    throw std::runtime_error("GStreamer told no " + std::string(key) + ": " + text);
  }
  std::uint64_t value = 0;
  std::from_chars(text.data() + position + key.size(), text.data() + text.size(), value);
  return value;
}

ToolResult runFfmpeg(const std::filesystem::path& file, double seekTo) {
  std::vector<std::string> arguments = {"ffmpeg", "-v", "warning", "-nostdin"};
  if (seekTo > 0) {
    arguments.insert(arguments.end(), {"-ss", std::to_string(seekTo)});
  }
  arguments.insert(arguments.end(), {"-i", file.string(), "-f", "f32le", "-"});
  return runTool(arguments);
}

/// Whether FFmpeg warns of nothing but what right files have: that there is nothing in them, and
/// that a WAV names no layout.
bool areHarmless(const std::string& lines) {
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    // Newer versions begin each line with the part that has something to say: "[af#0:0 @ 0x55] ".
    if (const auto end = line.find("] "); line.starts_with('[') && end != std::string::npos) {
      line.erase(0, end + 2);
    }
    if (!line.starts_with("Output file is empty") && !line.starts_with("No filtered frames") &&
        !line.starts_with("Guessed Channel Layout")) {
      return false;
    }
  }
  return true;
}

std::vector<float> floats(const std::string& bytes) {
  std::vector<float> samples(bytes.size() / sizeof(float));
  if (!samples.empty()) {
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
  }
  return samples;
}

}  // namespace

Probe probe(const std::filesystem::path& file) {
  const ToolResult result = runTool({"ffprobe", "-v", "error", "-show_entries",
                                     "stream=codec_name,sample_rate,channels,start_pts,duration_ts",
                                     "-of", "default=noprint_wrappers=1", file.string()});
  if (result.exitCode != 0 || !result.errors.empty()) {
    throw std::runtime_error("ffprobe: " + result.errors);
  }
  auto values = keysAndValues(result.output);
  return {values["codec_name"], integer(values["sample_rate"]).value_or(0),
          integer(values["channels"]).value_or(0), integer(values["start_pts"]),
          integer(values["duration_ts"])};
}

std::vector<float> decode(const std::filesystem::path& file, double seekTo) {
  const ToolResult result = runFfmpeg(file, seekTo);
  if (result.exitCode != 0 || !areHarmless(result.errors)) {
    throw std::runtime_error("ffmpeg: " + result.errors);
  }
  return floats(result.output);
}

std::vector<float> decodeTorn(const std::filesystem::path& file) {
  const ToolResult result = runFfmpeg(file, 0);
  if (result.exitCode != 0) {
    throw std::runtime_error("ffmpeg: " + result.errors);
  }
  return floats(result.output);
}

DemuxedSegment demuxWithGStreamer(const std::filesystem::path& file) {
  static const support::TemporaryFolder pluginRegistry;  // else it goes to the user's cache
  const ToolResult result =
      runTool({"env", "GST_REGISTRY=" + (pluginRegistry / "registry").string(), "gst-launch-1.0",
               "-v", "filesrc", "location=" + file.string(), "!", "qtdemux", "!", "identity",
               "silent=false", "!", "fakesink", "num-buffers=1"});
  if (result.exitCode != 0) {
    throw std::runtime_error("gst-launch-1.0: " + result.output + result.errors);
  }
  return {numberAfter(result.output, " start=(guint64)"),
          numberAfter(result.output, " stop=(guint64)")};
}

}  // namespace audrel::linuxos::test
