#pragma once

#include <chrono>
#include <cstdint>

namespace audrel::linuxos {

/// What the graph's driver says of one cycle.
struct GraphCycle {
  std::uint32_t clockId = 0;   ///< of the driver
  std::uint64_t position = 0;  ///< of the cycle's first frame, in the graph's frames
  std::uint64_t duration = 0;  ///< in the graph's frames
  std::uint32_t rate = 0;      ///< of the graph, frames per second
  std::uint64_t nsec = 0;      ///< of the cycle's start, on the monotonic clock
  std::uint64_t unheard = 0;   ///< nanoseconds of cycles before it in which others had a part
};

/// How long the cycle is, in nanoseconds.
std::uint64_t lengthOf(const GraphCycle& cycle);

/// Finds the time for which no cycle came.
///
/// While a driver runs, its position counts the frames, so a jump is exactly what was missed. But
/// the driver of a sound card that ran empty counts on as if nothing had been; so its count is held
/// against the monotonic clock, which tells of any stall that is longer than a cycle and a
/// twentieth of a second. Both clocks drift apart in the long run, which is forgiven.
///
/// Another driver, or the same one started again, counts from elsewhere: then only the monotonic
/// clock tells, and the switch itself may take up to two cycles without anything being missed,
/// since what the applications play next still comes next. What they played in cycles that the
/// stream had no part in is lost, though no time has gone by for it.
class GraphClock {
 public:
  /// The most that is ever missing at once: what is longer is found in several steps, so that no
  /// clock that goes wrong can flood the recording.
  static constexpr std::chrono::seconds longestStep{10};

  /// What a cycle brings.
  struct Step {
    std::uint64_t missing = 0;  ///< frames before it, at the recording's rate
    std::uint64_t unheard = 0;  ///< frames besides that were played, but no time has gone by for
    bool takesCycle = true;     ///< whether its own frames come next
    bool isRepeated = false;    ///< whether it is the last one again
  };

  /// `rate` of the recording, in frames per second.
  explicit GraphClock(double rate) : rate_(rate) {}

  /// Time starts, at `nsec`.
  void start(std::uint64_t nsec);

  /// Time goes to the cycle's end. A cycle is left out that began when not everything was linked,
  /// or in a silence that already stands for it, or before which more is missing than a step, or
  /// that came before.
  Step advance(const GraphCycle& cycle);

  /// The frames of silence from where time is to `nsec`, none if that is past, a step at most. Time
  /// is at their end then, and the next cycle is another driver's first.
  std::uint64_t advanceTo(std::uint64_t nsec);

  /// The same at the end of all, where what comes after the last cycle is missing only when another
  /// was due for some time.
  std::uint64_t finish(std::uint64_t nsec);

 private:
  std::uint64_t framesIn(std::uint64_t nanoseconds) const;
  std::uint64_t framesTo(std::uint64_t nsec) const;
  bool isSilenced(const GraphCycle& cycle) const;
  bool isRepeated(const GraphCycle& cycle) const;
  bool isOfSameDriver(const GraphCycle& cycle) const;
  std::uint64_t missedBySameDriver(const GraphCycle& cycle);
  std::uint64_t missedByAnotherDriver(const GraphCycle& cycle) const;
  std::uint64_t missedBefore(const GraphCycle& cycle);

  enum class Last { nothing, cycle, silence };

  double rate_;
  Last last_ = Last::nothing;
  GraphCycle cycle_;
  std::uint64_t end_ = 0;  ///< up to where the recording is complete, monotonic nanoseconds
  std::uint64_t silentSince_ = 0;
  std::int64_t ahead_ = 0;  ///< of the monotonic clock, by the driver's count, in nanoseconds
};

}  // namespace audrel::linuxos
