#pragma once

#include <atomic>
#include <cstdint>

namespace audrel {

/// Counts IO cycles that were dropped for lack of memory. Atomic, because a start resets it while
/// the IO thread may already be counting; relaxed, because nothing else hangs on its value.
class UnderrunCounter {
 public:
  explicit UnderrunCounter(std::int64_t value = 0) : value_(value) {}

  std::int64_t value() const noexcept { return value_.load(std::memory_order_relaxed); }
  void reset() noexcept { value_.store(0, std::memory_order_relaxed); }

  /// Ends the process when the count is at its maximum: a count that wrapped would be a lie.
  void increment() noexcept;

 private:
  std::atomic<std::int64_t> value_;
  static_assert(std::atomic<std::int64_t>::is_always_lock_free);
};

}  // namespace audrel
