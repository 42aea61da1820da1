#include "cli/RecordingMeter.h"

#include <algorithm>
#include <utility>

namespace audrel::cli {

void RecordingMeter::add(std::uint32_t frames, double sampleRate, std::optional<float> peak) {
  const std::scoped_lock lock(mutex_);
  total_.frames += frames;
  total_.sampleRate = sampleRate;
  // Nothing is less than any peak.
  total_.peak = std::max(total_.peak, peak);
  recentPeak_ = std::max(recentPeak_, peak);
}

void RecordingMeter::addFailure(const NS::Error& error) {
  const std::scoped_lock lock(mutex_);
  if (total_.failedWrites == 0) {
    total_.firstFailure = error.localizedDescription;
  }
  ++total_.failedWrites;
}

RecordedAudio RecordingMeter::total() const {
  const std::scoped_lock lock(mutex_);
  return total_;
}

std::optional<float> RecordingMeter::takeRecentPeak() {
  const std::scoped_lock lock(mutex_);
  return std::exchange(recentPeak_, std::nullopt);
}

}  // namespace audrel::cli
