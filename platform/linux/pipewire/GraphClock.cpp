#include "platform/linux/pipewire/GraphClock.h"

#include <algorithm>
#include <cmath>

namespace audrel::linuxos {

namespace {

constexpr std::uint64_t second = 1'000'000'000;

// How late a driver may be, besides a cycle, and make up for it.
constexpr std::uint64_t tolerance = second / 20;

// The difference between a driver's count and the monotonic clock fades in about so many cycles:
// fast enough that no clock of a sound card, a virtual machine's included, seems to stall by
// running slow.
constexpr std::int64_t memoryInCycles = 128;

// Of the largest quantum that a graph uses: what to expect before there was a cycle.
constexpr std::uint64_t largestQuantum = 8192;

constexpr std::uint64_t stepLength = GraphClock::longestStep / std::chrono::nanoseconds(1);

}  // namespace

std::uint64_t lengthOf(const GraphCycle& cycle) {
  return cycle.rate == 0 ? 0 : cycle.duration * second / cycle.rate;
}

void GraphClock::start(std::uint64_t nsec) {
  last_ = Last::nothing;
  cycle_ = {.duration = largestQuantum, .rate = static_cast<std::uint32_t>(std::lround(rate_))};
  ahead_ = 0;
  end_ = nsec;
}

std::uint64_t GraphClock::framesIn(std::uint64_t nanoseconds) const {
  return static_cast<std::uint64_t>(
      std::llround(static_cast<double>(nanoseconds) * rate_ / static_cast<double>(second)));
}

std::uint64_t GraphClock::framesTo(std::uint64_t nsec) const {
  return nsec <= end_ ? 0 : framesIn(nsec - end_);
}

/// Whether the cycle began before `end_`: with time that has just started or stood in silence in
/// the midst of it, or wholly in that silence, as a server's that catches up after it hung.
bool GraphClock::isSilenced(const GraphCycle& cycle) const {
  if (last_ == Last::cycle || cycle.nsec >= end_) {
    return false;
  }
  const bool isTorn = end_ < cycle.nsec + lengthOf(cycle);
  return isTorn || (last_ == Last::silence && cycle.nsec >= silentSince_);
}

/// What is resampled may come in several pieces a cycle, and is never taken for repeated.
bool GraphClock::isRepeated(const GraphCycle& cycle) const {
  return cycle.rate == rate_ && last_ == Last::cycle && cycle.clockId == cycle_.clockId &&
         cycle.position == cycle_.position && cycle.nsec == cycle_.nsec;
}

bool GraphClock::isOfSameDriver(const GraphCycle& cycle) const {
  return cycle.clockId == cycle_.clockId && cycle.rate == cycle_.rate && cycle.rate > 0 &&
         cycle.position > cycle_.position;
}

std::uint64_t GraphClock::missedBySameDriver(const GraphCycle& cycle) {
  const std::uint64_t expected = cycle_.position + cycle_.duration;
  const std::uint64_t jump = cycle.position > expected ? cycle.position - expected : 0;
  const GraphCycle counted{.duration = cycle.position - cycle_.position, .rate = cycle.rate};
  ahead_ += static_cast<std::int64_t>(lengthOf(counted)) -
            static_cast<std::int64_t>(cycle.nsec - cycle_.nsec);
  std::uint64_t stalled = 0;
  if (ahead_ < -static_cast<std::int64_t>(lengthOf(cycle_) + tolerance)) {
    stalled = framesIn(static_cast<std::uint64_t>(-ahead_));
    ahead_ = 0;
  }
  ahead_ -= ahead_ / memoryInCycles;
  return stalled +
         static_cast<std::uint64_t>(std::llround(static_cast<double>(jump) * rate_ / cycle.rate));
}

std::uint64_t GraphClock::missedByAnotherDriver(const GraphCycle& cycle) const {
  const std::uint64_t forSwitching = lengthOf(cycle) + lengthOf(cycle_);
  return cycle.nsec > end_ + forSwitching ? framesTo(cycle.nsec) : 0;
}

std::uint64_t GraphClock::missedBefore(const GraphCycle& cycle) {
  if (last_ == Last::cycle && isOfSameDriver(cycle)) {
    return missedBySameDriver(cycle);
  }
  ahead_ = 0;
  switch (last_) {
    case Last::cycle:
      return missedByAnotherDriver(cycle);
    case Last::silence:
      return framesTo(cycle.nsec);
    case Last::nothing:
      break;
  }
  return 0;
}

GraphClock::Step GraphClock::advance(const GraphCycle& cycle) {
  if (isSilenced(cycle)) {
    return {.takesCycle = false};
  }
  if (isRepeated(cycle)) {
    return {.takesCycle = false, .isRepeated = true};
  }
  const std::uint64_t played = last_ == Last::cycle ? framesIn(cycle.unheard) : 0;
  const std::uint64_t missing = missedBefore(cycle);
  if (missing > framesIn(stepLength)) {
    return {.missing = advanceTo(end_ + stepLength), .takesCycle = false};
  }
  last_ = Last::cycle;
  cycle_ = cycle;
  end_ = cycle.nsec + lengthOf(cycle);
  return {.missing = missing, .unheard = played - std::min(played, missing)};
}

std::uint64_t GraphClock::advanceTo(std::uint64_t nsec) {
  if (last_ != Last::silence) {
    silentSince_ = end_;
    last_ = Last::silence;
  }
  const std::uint64_t reached = std::min(nsec, end_ + stepLength);
  const std::uint64_t frames = framesTo(reached);
  end_ = std::max(end_, reached);
  return frames;
}

std::uint64_t GraphClock::finish(std::uint64_t nsec) {
  const std::uint64_t made = end_ + static_cast<std::uint64_t>(std::max<std::int64_t>(ahead_, 0));
  const bool isDue = last_ == Last::silence || nsec > made + lengthOf(cycle_) + tolerance;
  return isDue ? advanceTo(nsec) : 0;
}

}  // namespace audrel::linuxos
