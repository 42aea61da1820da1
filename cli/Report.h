#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/RecordingMeter.h"
#include "platform/Diagnostics.h"

namespace audrel::cli {

/// What became of a recording.
struct Report {
  std::filesystem::path file;
  RecordedAudio audio;           ///< that was handed to the file
  capture::FileLoss loss;        ///< what of it the file does not have
  std::int64_t underruns = 0;    ///< cycles dropped for lack of memory
  std::uint64_t lostFrames = 0;  ///< not delivered in time; silence in the file
  bool wasStopped = false;       ///< the program itself, for a while
  std::uintmax_t fileSize = 0;   ///< bytes

  /// What the file has.
  std::uint64_t frames() const { return audio.frames - std::min(audio.frames, loss.missing); }

  /// Frames that could not be written.
  std::uint64_t missingFrames() const { return loss.missing + loss.silenced; }

  /// Whether everything that was played during the recording is in the file.
  bool isComplete() const { return missingFrames() == 0 && underruns == 0 && lostFrames == 0; }
};

/// One line: file, length, size and peak. Safe for a terminal.
std::string textOf(const Report& report);

/// One object: "file", "seconds", "frames", "complete", "missingFrames", "failedWrites",
/// "underruns", "lostFrames" and "peakDBFS", which is null when there is nothing but silence.
std::string jsonOf(const Report& report);

/// What the user should know about the recording beyond that, a line each: what could not be
/// written, frames that did not come, nothing but silence. Safe for a terminal.
std::vector<std::string> warningsOf(const Report& report);

}  // namespace audrel::cli
