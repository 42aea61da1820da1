#pragma once

#include <cstdint>

namespace audrel::linuxos {

/// What the graph's driver says of one cycle.
struct GraphCycle {
  std::uint32_t clockId = 0;   ///< of the driver
  std::uint64_t position = 0;  ///< of the cycle's first frame, in the graph's frames
  std::uint64_t duration = 0;  ///< in the graph's frames
  std::uint32_t rate = 0;      ///< of the graph, frames per second
  std::uint64_t nsec = 0;      ///< of the cycle's start, on the monotonic clock
};

/// Finds the time for which no cycle came.
///
/// While a driver runs, its position counts every frame, so a jump is exactly what was missed.
/// Another driver, or the same one started anew, counts from elsewhere: then only the monotonic
/// clock tells, and the switch itself may take up to two cycles without anything being missed,
/// since what the applications play next still comes next.
class GraphClock {
 public:
  /// `rate` of the recording, in frames per second.
  explicit GraphClock(double rate) : rate_(rate) {}

  /// Time starts, at `nsec`.
  void start(std::uint64_t nsec);

  /// Whether time, which started or stood in silence, is within the cycle. It must be left out: it
  /// began when not everything was linked.
  bool isTornBy(const GraphCycle& cycle) const;

  /// The frames, at the recording's rate, that are missing before the cycle. Time is at its end
  /// then.
  std::uint64_t advance(const GraphCycle& cycle);

  /// The frames from where time is to `nsec`, none if that is past; time is there then, and the
  /// next cycle is another driver's first.
  std::uint64_t advanceTo(std::uint64_t nsec);

 private:
  std::uint64_t framesBetween(std::uint64_t from, std::uint64_t to) const;

  enum class Last { nothing, cycle, silence };

  double rate_;
  Last last_ = Last::nothing;
  GraphCycle cycle_;
  std::uint64_t end_ = 0;  ///< up to where the recording is complete, monotonic nanoseconds
};

}  // namespace audrel::linuxos
