#include "cli/Report.h"

#include <optional>
#include <string_view>

#include "cli/Json.h"
#include "cli/Numbers.h"
#include "cli/RecordingMeter.h"
#include "platform/Printable.h"

namespace audrel::cli {

namespace {

std::string counted(std::uint64_t number, const std::string& one, const std::string& several) {
  return std::to_string(number) + " " + (number == 1 ? one : several);
}

std::string amount(const RecordedAudio& audio, std::uint64_t frames) {
  return formatLength(audio.secondsOf(frames)) + " of audio (" +
         counted(frames, "frame", "frames") + ")";
}

/// What failed writes came to, a line each.
std::vector<std::string> failuresOf(const Report& report) {
  const auto& audio = report.audio;
  const auto& loss = report.loss;
  const auto why = " " + printable(loss.why.empty() ? audio.firstFailure : loss.why);
  std::vector<std::string> lines;
  if (loss.missing > 0) {
    lines.push_back("Missing in the file: " + amount(audio, loss.missing) +
                    ", which could not be written." + why);
  }
  if (loss.silenced > 0) {
    lines.push_back("Silence in the file in place of " + amount(audio, loss.silenced) +
                    ", which could not be written." + why);
  }
  if (lines.empty() && !loss.why.empty()) {
    lines.push_back("The file holds all of the audio, but could not be finished." + why);
  } else if (lines.empty() && audio.failedWrites > 0) {
    lines.push_back(counted(audio.failedWrites, "write", "writes") +
                    " failed, but nothing is missing: it was all written later.");
  }
  return lines;
}

std::string lostFrames(const Report& report) {
  const auto frames = report.lostFrames;
  const double sampleRate = report.audio.sampleRate;
  auto line = counted(frames, "frame was", "frames were") + " not delivered in time";
  if (sampleRate > 0) {
    line += " (" + withDecimals(static_cast<double>(frames) / sampleRate, 3) + " s)";
  }
  return line + "; silence stands in their place. " +
         (report.wasStopped ? "The program was stopped for a while, by Ctrl-Z for instance."
                            : "The computer was busy, or the audio server away.");
}

}  // namespace

std::string textOf(const Report& report) {
  const auto& audio = report.audio;
  auto line = "Saved " + printable(report.file.native()) + ": " +
              formatLength(audio.secondsOf(report.frames())) + ", " +
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
      {"seconds", jsonNumber(audio.secondsOf(report.frames()))},
      {"frames", std::to_string(report.frames())},
      {"complete", report.isComplete() ? "true" : "false"},
      {"missingFrames", std::to_string(report.missingFrames())},
      {"failedWrites", std::to_string(audio.failedWrites)},
      {"underruns", std::to_string(report.underruns)},
      {"lostFrames", std::to_string(report.lostFrames)},
      {"peakDBFS", peak.has_value() ? withDecimals(*peak, 2) : "null"},
  });
}

std::vector<std::string> warningsOf(const Report& report) {
  const auto& audio = report.audio;
  auto warnings = failuresOf(report);
  if (report.lostFrames > 0) {
    warnings.push_back(lostFrames(report));
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
