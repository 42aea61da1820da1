#include "cli/Report.h"

#include <chrono>
#include <optional>
#include <string_view>

#include "cli/Json.h"
#include "cli/Numbers.h"
#include "cli/RecordingMeter.h"
#include "platform/Printable.h"

namespace audrel::cli {

namespace {

std::string lengthOf(double seconds) {
  constexpr double shortRecording = 60;
  if (seconds < shortRecording) {
    return withDecimals(seconds, 1) + " s";
  }
  return formatDuration(std::chrono::seconds(static_cast<std::int64_t>(seconds)));
}

std::string counted(std::uint64_t number, const std::string& one, const std::string& several) {
  return std::to_string(number) + " " + (number == 1 ? one : several);
}

std::string failedWrites(const RecordedAudio& audio) {
  return counted(audio.failedWrites, "write", "writes") +
         " failed, so audio may be missing; the rest of the file is kept. The first failure: " +
         printable(audio.firstFailure);
}

std::string lostFrames(std::uint64_t frames, double sampleRate) {
  auto line = counted(frames, "frame was", "frames were") + " not delivered in time";
  if (sampleRate > 0) {
    line += " (" + withDecimals(static_cast<double>(frames) / sampleRate, 3) + " s)";
  }
  return line + "; silence stands in their place. Is the computer busy?";
}

}  // namespace

std::string textOf(const Report& report) {
  const auto& audio = report.audio;
  auto line = "Saved " + printable(report.file.native()) + ": " + lengthOf(audio.seconds()) + ", " +
              formatByteCount(report.fileSize);
  if (audio.peak.has_value()) {
    line += ", peak " + describePeak(*audio.peak);
  }
  return line;
}

std::string jsonOf(const Report& report) {
  const auto& audio = report.audio;
  const auto peak = audio.peak.has_value() ? decibels(*audio.peak) : std::nullopt;
  return jsonObject({
      {"file", jsonString(std::string_view(report.file.native()))},
      {"seconds", jsonNumber(audio.seconds())},
      {"frames", std::to_string(audio.frames)},
      {"underruns", std::to_string(report.underruns)},
      {"lostFrames", std::to_string(report.lostFrames)},
      {"peakDBFS", peak.has_value() ? withDecimals(*peak, 2) : "null"},
  });
}

std::vector<std::string> warningsOf(const Report& report) {
  const auto& audio = report.audio;
  std::vector<std::string> warnings;
  if (audio.failedWrites > 0) {
    warnings.push_back(failedWrites(audio));
  }
  if (report.lostFrames > 0) {
    warnings.push_back(lostFrames(report.lostFrames, audio.sampleRate));
  }
  if (report.underruns > 0) {
    warnings.push_back(counted(static_cast<std::uint64_t>(report.underruns), "cycle of audio was",
                               "cycles of audio were") +
                       " dropped for lack of memory.");
  }
  if (audio.frames == 0) {
    warnings.emplace_back("The recording is empty: it ended before any audio came.");
  } else if (audio.isDigitalSilence()) {
    warnings.emplace_back(
        "All of the recording is digital silence: nothing played, or all of it was muted.");
  }
  return warnings;
}

}  // namespace audrel::cli
