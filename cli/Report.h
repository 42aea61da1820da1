#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/RecordingMeter.h"

namespace audrel::cli {

/// What became of a recording.
struct Report {
  std::filesystem::path file;
  RecordedAudio audio;
  std::int64_t underruns = 0;    ///< cycles dropped for lack of memory
  std::uint64_t lostFrames = 0;  ///< not delivered in time; silence in the file
  std::uintmax_t fileSize = 0;   ///< bytes
};

/// One line: file, length, size and peak. Safe for a terminal.
std::string textOf(const Report& report);

/// One object: "file", "seconds", "frames", "underruns", "lostFrames" and "peakDBFS", which is null
/// when there is nothing but silence.
std::string jsonOf(const Report& report);

/// What the user should know about the recording beyond that, a line each: failed writes, frames
/// that are missing, nothing but silence. Safe for a terminal.
std::vector<std::string> warningsOf(const Report& report);

}  // namespace audrel::cli
