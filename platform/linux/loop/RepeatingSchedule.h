#pragma once

#include <chrono>

namespace audrel::linuxos {

/// The firing times of a repeating timer: its start plus whole intervals, whatever happens between
/// them, so that it never drifts.
class RepeatingSchedule {
 public:
  /// `interval` in seconds; one that is not above zero counts as a tenth of a millisecond.
  RepeatingSchedule(std::chrono::microseconds start, double interval);

  /// The first firing time after `time`. Those before it that were missed are left out.
  std::chrono::microseconds nextAfter(std::chrono::microseconds time) const;

 private:
  std::chrono::microseconds start_;
  std::chrono::microseconds interval_;
};

}  // namespace audrel::linuxos
