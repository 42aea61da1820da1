#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

struct pw_loop;

namespace audrel::linuxos {

/// The time that running devices go by.
class CaptureTime {
 public:
  /// Tells somebody that time goes on; until it is destroyed.
  class Ticks {
   public:
    virtual ~Ticks() = default;

    /// From now on every `period`; 0 is never.
    virtual void setPeriod(std::chrono::nanoseconds period) = 0;
  };

  virtual ~CaptureTime() = default;

  /// Nanoseconds of the clock that PipeWire stamps its cycles with. Any thread, the data thread
  /// too.
  virtual std::uint64_t now() const noexcept = 0;

  /// `tick` is called on the loop's thread, and at first never. Made, set and destroyed on that
  /// thread or under the loop's lock. Null, with `errno` set, when the system gives no timer.
  virtual std::unique_ptr<Ticks> makeTicks(pw_loop* loop, std::function<void()> tick) = 0;
};

}  // namespace audrel::linuxos
