#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace audrel::cli {

/// What a recording looks like right now.
struct RecordingStatus {
  std::chrono::seconds elapsed{0};
  std::optional<std::chrono::seconds> total = {};  ///< nothing: until it is stopped
  std::string_view notice = {};  ///< what must be seen; plain ASCII, empty for nothing
  std::optional<float> peak;     ///< since the last status; nothing when nothing came
  std::uintmax_t fileSize = 0;
};

/// One line of at most `width` characters, plain ASCII: elapsed time and total, notice, a bar from
/// -60 dBFS to full scale, the level in figures and the file's size. Where it gets narrow, bar,
/// size, level, notice and time go in this order.
std::string statusLine(const RecordingStatus& status, int width);

}  // namespace audrel::cli
