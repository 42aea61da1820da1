#include "platform/linux/pipewire/GraphClock.h"

#include <cmath>

namespace audrel::linuxos {

namespace {

constexpr double nanosecondsPerSecond = 1e9;

std::uint64_t nanoseconds(const GraphCycle& cycle) {
  return cycle.rate == 0 ? 0 : cycle.duration * 1'000'000'000U / cycle.rate;
}

}  // namespace

void GraphClock::start(std::uint64_t nsec) {
  last_ = Last::nothing;
  end_ = nsec;
}

std::uint64_t GraphClock::framesBetween(std::uint64_t from, std::uint64_t to) const {
  if (to <= from) {
    return 0;
  }
  return static_cast<std::uint64_t>(
      std::llround(static_cast<double>(to - from) * rate_ / nanosecondsPerSecond));
}

bool GraphClock::isTornBy(const GraphCycle& cycle) const {
  return last_ != Last::cycle && cycle.nsec < end_ && end_ < cycle.nsec + nanoseconds(cycle);
}

std::uint64_t GraphClock::advance(const GraphCycle& cycle) {
  std::uint64_t missing = 0;
  const bool isSameDriver = last_ == Last::cycle && cycle.clockId == cycle_.clockId &&
                            cycle.rate == cycle_.rate && cycle.position > cycle_.position;
  if (isSameDriver) {
    const std::uint64_t expected = cycle_.position + cycle_.duration;
    if (cycle.position > expected && cycle.rate > 0) {
      missing = static_cast<std::uint64_t>(
          std::llround(static_cast<double>(cycle.position - expected) * rate_ / cycle.rate));
    }
  } else if (last_ == Last::silence) {
    missing = framesBetween(end_, cycle.nsec);
  } else if (last_ == Last::cycle) {
    const std::uint64_t tolerance = nanoseconds(cycle) + nanoseconds(cycle_);
    missing = cycle.nsec > end_ + tolerance ? framesBetween(end_, cycle.nsec) : 0;
  }
  last_ = Last::cycle;
  cycle_ = cycle;
  end_ = cycle.nsec + nanoseconds(cycle);
  return missing;
}

std::uint64_t GraphClock::advanceTo(std::uint64_t nsec) {
  const std::uint64_t frames = framesBetween(end_, nsec);
  if (nsec > end_) {
    end_ = nsec;
  }
  last_ = Last::silence;
  return frames;
}

}  // namespace audrel::linuxos
