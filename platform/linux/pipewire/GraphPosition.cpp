#include "platform/linux/pipewire/GraphPosition.h"

#include <spa/node/io.h>

#include <algorithm>
#include <thread>

namespace audrel::linuxos {

namespace {

GraphCycle cycleOf(const spa_io_clock& clock) {
  return {.clockId = clock.id,
          .position = clock.position,
          .duration = clock.duration,
          .rate = clock.rate.num == 0 ? 0 : clock.rate.denom / clock.rate.num,
          .nsec = clock.nsec};
}

/// How long the cycles are together that a driver which did not pause has begun since then.
std::uint64_t begunSince(std::uint64_t nsec, const GraphCycle& last) {
  const std::uint64_t length = lengthOf(last);
  if (nsec == 0 || last.nsec <= nsec || length == 0) {
    return 0;
  }
  return ((last.nsec - nsec) / length + 1) * length;
}

}  // namespace

// Either side writes before it looks at the other's, so the reader has the new area, or is seen.
void GraphPosition::replace(const spa_io_position* area) {
  const Area& former = *area_.load();
  Area& next = areas_[&former == areas_.data() ? 1 : 0];
  next.memory = area;
  next.unheardBefore = former.isHeard ? 0 : former.unheardBefore + former.unheard;
  next.unheard = 0;
  next.nobodys = 0;
  next.isHeard = false;
  if (area != nullptr) {
    const GraphCycle last = cycleOf(area->clock);
    const bool isRestarted = stop_ && stop_->clockId == last.clockId;
    next.unheard = begunUnheard(last);
    // Who moves to a driver while it plays is let in after that has begun its first cycle. A driver
    // that was stopped together with those that play begins when they do.
    next.nobodys = isRestarted ? 0 : std::min(next.unheard, lengthOf(last));
    if (isRestarted) {
      stop_.reset();
    }
  }
  area_.store(&next);
  while (isRead_.load()) {
    std::this_thread::yield();
  }
}

/// What the driver whose last cycle this is has begun since the stream had a part in one.
std::uint64_t GraphPosition::begunUnheard(const GraphCycle& last) const {
  if (!stop_ || stop_->clockId != last.clockId) {
    return begunSince(lastRead_, last);
  }
  // Its count tells what it made of the time since the stop.
  const GraphCycle counted{.duration = last.position - std::min(stop_->position, last.position),
                           .rate = last.rate};
  return std::min(begunSince(stop_->nsec, last), lengthOf(counted));
}

void GraphPosition::noteStop() {
  stop_ = {.clockId = lastClock_, .position = lastPosition_, .nsec = lastRead_};
}

std::optional<GraphCycle> GraphPosition::cycle(std::uint64_t now) noexcept {
  std::optional<GraphCycle> cycle;
  isRead_.store(true);
  Area& area = *area_.load();
  if (area.memory != nullptr) {
    cycle = cycleOf(area.memory->clock);
    if (!area.isHeard.exchange(true)) {
      cycle->unheard = area.unheardBefore + area.unheard - area.nobodys;
    }
    lastRead_ = now;
    lastClock_ = cycle->clockId;
    lastPosition_ = cycle->position;
  }
  isRead_.store(false);
  return cycle;
}

}  // namespace audrel::linuxos
