#include "platform/linux/loop/RepeatingSchedule.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace audrel::linuxos {

namespace {

constexpr std::chrono::microseconds shortestInterval(100);

/// A hundred years: longer than any machine runs, and far from the end of the clock's range.
constexpr double longestSeconds = 100.0 * 365 * 24 * 3600;

std::chrono::microseconds intervalOf(double seconds) {
  if (!(seconds > 0)) {
    return shortestInterval;
  }
  const double microseconds = std::round(std::min(seconds, longestSeconds) * 1e6);
  return std::max(shortestInterval,
                  std::chrono::microseconds(static_cast<std::int64_t>(microseconds)));
}

}  // namespace

RepeatingSchedule::RepeatingSchedule(std::chrono::microseconds start, double interval)
    : start_(start), interval_(intervalOf(interval)) {}

std::chrono::microseconds RepeatingSchedule::nextAfter(std::chrono::microseconds time) const {
  if (time < start_) {
    return start_ + interval_;
  }
  return start_ + interval_ * ((time - start_) / interval_ + 1);
}

}  // namespace audrel::linuxos
