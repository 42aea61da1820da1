#include "platform/linux/pipewire/GraphPosition.h"

#include <spa/node/io.h>

#include <thread>

namespace audrel::linuxos {

// Either side writes before it looks at the other's, so the reader has the new area, or is seen.
void GraphPosition::replace(const spa_io_position* area) {
  area_.store(area);
  while (isRead_.load()) {
    std::this_thread::yield();
  }
}

std::optional<GraphCycle> GraphPosition::cycle() noexcept {
  std::optional<GraphCycle> cycle;
  isRead_.store(true);
  if (const spa_io_position* area = area_.load()) {
    const spa_io_clock& clock = area->clock;
    cycle = {.clockId = clock.id,
             .position = clock.position,
             .duration = clock.duration,
             .rate = clock.rate.num == 0 ? 0 : clock.rate.denom / clock.rate.num,
             .nsec = clock.nsec};
  }
  isRead_.store(false);
  return cycle;
}

}  // namespace audrel::linuxos
