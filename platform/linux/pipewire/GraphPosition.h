#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>

#include "platform/linux/pipewire/GraphClock.h"

struct spa_io_position;

namespace audrel::linuxos {

/// Where the server tells what cycle it is: memory that it shares with the data thread, and takes
/// back when the driver changes.
///
/// A driver may run before the server lets our stream in, while applications that it has let in
/// play: how long these cycles were is told with the first one that the stream has a part in.
class GraphPosition {
 public:
  /// From now on `area` tells, or nothing does. On return nobody reads the former one, which may be
  /// unmapped then. Not on the data thread while it reads.
  void replace(const spa_io_position* area);

  /// The server has stopped the stream, as it does with all streams when a quantum is forced. On
  /// the thread that replaces.
  void noteStop();

  /// The cycle; nothing while there is no area. `now` on the monotonic clock, in nanoseconds. On
  /// the data thread: takes no lock and never waits.
  std::optional<GraphCycle> cycle(std::uint64_t now) noexcept;

 private:
  struct Stop {
    std::uint32_t clockId = 0;
    std::uint64_t position = 0;  ///< of the last cycle before it
    std::uint64_t nsec = 0;      ///< when that was read
  };
  struct Area {
    const spa_io_position* memory = nullptr;
    std::uint64_t unheardBefore = 0;  ///< of drivers that were left before a cycle of them came
    std::uint64_t unheard = 0;        ///< of this one
    std::uint64_t nobodys = 0;        ///< of these, the time in which no application was let in
    std::atomic<bool> isHeard = false;
  };

  std::uint64_t begunUnheard(const GraphCycle& last) const;

  std::array<Area, 2> areas_;  ///< the one that tells, and the one that is written next
  std::atomic<Area*> area_ = areas_.data();
  std::atomic<bool> isRead_ = false;
  std::atomic<std::uint64_t> lastRead_ = 0;  ///< monotonic nanoseconds
  std::atomic<std::uint32_t> lastClock_ = 0;
  std::atomic<std::uint64_t> lastPosition_ = 0;
  std::optional<Stop> stop_;  ///< until the driver is back
};

}  // namespace audrel::linuxos
