#include "tests/platform/linux/files/Tools.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstring>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/support/TemporaryFolder.h"

extern char** environ;

namespace audrel::linuxos::test {
namespace {

struct Pipe {
  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    close(ends[0]);
    closeWriteEnd();
  }
  void closeWriteEnd() {
    if (ends[1] >= 0) {
      close(ends[1]);
      ends[1] = -1;
    }
  }

  std::array<int, 2> ends{};
};

void readAll(const Pipe& output, std::string* outputText, const Pipe& errors,
             std::string* errorText) {
  std::array<pollfd, 2> waits = {pollfd{output.ends[0], POLLIN, 0},
                                 pollfd{errors.ends[0], POLLIN, 0}};
  const std::array<std::string*, 2> texts = {outputText, errorText};
  std::vector<char> buffer(1U << 16U);
  int open = 2;
  while (open > 0 && poll(waits.data(), waits.size(), -1) >= 0) {
    for (std::size_t i = 0; i < waits.size(); ++i) {
      if (waits.at(i).revents == 0) {
        continue;
      }
      const ssize_t count = read(waits.at(i).fd, buffer.data(), buffer.size());
      if (count > 0) {
        texts.at(i)->append(buffer.data(), static_cast<std::size_t>(count));
      } else {
        waits.at(i).fd = -1;
        --open;
      }
    }
  }
}

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

/// What FFmpeg warns of in right files: that there is nothing in them, and that WAV names no
/// layout.
bool isHarmless(std::string_view line) {
  // Newer versions begin each line with the part that has something to say: "[af#0:0 @ 0x55bb0bc8]
  // ".
  if (const auto end = line.find("] "); line.starts_with('[') && end != line.npos) {
    line.remove_prefix(end + 2);
  }
  return line.starts_with("Output file is empty") || line.starts_with("No filtered frames") ||
         line.starts_with("Guessed Channel Layout");
}

bool areHarmless(const std::string& lines) {
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    if (!isHarmless(line)) {
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

ToolResult runTool(const std::vector<std::string>& arguments) {
  std::vector<std::string> copies = arguments;
  std::vector<char*> pointers;
  for (std::string& argument : copies) {
    pointers.push_back(argument.data());
  }
  pointers.push_back(nullptr);

  Pipe output;
  Pipe errors;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output.ends[1], 1);
  posix_spawn_file_actions_adddup2(&actions, errors.ends[1], 2);
  pid_t child = 0;
  const int spawned =
      posix_spawnp(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) {
    throw std::system_error(spawned, std::generic_category(), arguments[0]);
  }
  output.closeWriteEnd();
  errors.closeWriteEnd();

  ToolResult result;
  readAll(output, &result.output, errors, &result.errors);
  int status = 0;
  waitpid(child, &status, 0);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

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
