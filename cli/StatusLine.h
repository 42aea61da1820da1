#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace audrel::cli {

/// What a recording looks like right now.
struct RecordingStatus {
  std::chrono::seconds elapsed{0};
  std::optional<float> peak;  ///< since the last status; nothing when nothing came
  std::uintmax_t fileSize = 0;
};

/// One line of at most `width` characters, plain ASCII: elapsed time, a bar from -60 dBFS to full
/// scale, the level in figures and the file's size. Where it gets narrow, bar, size and level go
/// in this order, and at last the time is cut.
std::string statusLine(const RecordingStatus& status, int width);

}  // namespace audrel::cli
