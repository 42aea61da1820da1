#include "cli/StatusLine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "cli/Numbers.h"
#include "cli/RecordingMeter.h"

namespace audrel::cli {

namespace {

constexpr std::size_t narrowestBar = 10;
constexpr std::size_t widestBar = 40;
constexpr double quietestShown = -60;  // dBFS

constexpr const char* gap = "  ";
constexpr std::size_t gapSize = 2;

/// Filled to the level's part of the way from the quietest shown to full scale.
std::string bar(std::optional<float> peak, std::size_t size) {
  const double level = decibels(peak.value_or(0)).value_or(quietestShown);
  const double part = std::clamp(1 - level / quietestShown, 0.0, 1.0);
  const auto filled = static_cast<std::size_t>(std::lround(part * static_cast<double>(size)));
  return std::string(filled, '#') + std::string(size - filled, '.');
}

/// So that what follows does not move while the figures change.
std::string padded(const std::string& text, std::size_t size) {
  return std::string(size - std::min(size, text.size()), ' ') + text;
}

}  // namespace

std::string statusLine(const RecordingStatus& status, int width) {
  const auto room = static_cast<std::size_t>(std::max(width, 0));
  const auto time = formatDuration(status.elapsed) +
                    (status.total.has_value() ? " / " + formatDuration(*status.total) : "");
  const auto level =
      padded(status.peak.has_value() ? describePeak(*status.peak) : "", sizeof "-120.0 dBFS" - 1);
  const auto size = padded(formatByteCount(status.fileSize), sizeof "999.9 MB" - 1);

  const auto head = status.notice.empty() ? time : (time + gap).append(status.notice);
  const auto withLevel = head + gap + level;
  const auto withSize = withLevel + gap + size;
  if (withSize.size() + gapSize + narrowestBar + 2 <= room) {
    const auto barSize = std::min(room - withSize.size() - gapSize - 2, widestBar);
    return head + gap + "[" + bar(status.peak, barSize) + "]" + gap + level + gap + size;
  }
  for (const auto& line : {withSize, withLevel, head, time}) {
    if (line.size() <= room) {
      return line;
    }
  }
  return "";
}

}  // namespace audrel::cli
