#pragma once

#include <atomic>
#include <optional>

#include "platform/linux/pipewire/GraphClock.h"

struct spa_io_position;

namespace audrel::linuxos {

/// Where the server tells what cycle it is: memory that it shares with the data thread, and takes
/// back when the driver changes.
class GraphPosition {
 public:
  /// From now on `area` tells, or nothing does. On return nobody reads the former one, which may be
  /// unmapped then. Not on the data thread while it reads.
  void replace(const spa_io_position* area);

  /// The cycle; nothing while there is no area. On the data thread: takes no lock and never waits.
  std::optional<GraphCycle> cycle() noexcept;

 private:
  std::atomic<const spa_io_position*> area_ = nullptr;
  std::atomic<bool> isRead_ = false;
};

}  // namespace audrel::linuxos
