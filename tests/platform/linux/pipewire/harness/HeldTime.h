#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/linux/pipewire/CaptureTime.h"
#include "platform/linux/pipewire/MonotonicTime.h"

namespace audrel::pwtest {

/// Time that stands still until the test lets it pass. It begins at the monotonic clock's.
class HeldTime final : public linuxos::CaptureTime {
 public:
  std::uint64_t now() const noexcept override {
    ++reads_;
    return now_;
  }
  std::unique_ptr<Ticks> makeTicks(pw_loop* loop, std::function<void()> tick) override;

  /// How often somebody has asked what time it is: while none passes, a tap once a cycle.
  std::uint64_t reads() const { return reads_; }

  /// On return whoever was to be told on the way has been. Not under the lock of a loop.
  void pass(std::chrono::nanoseconds duration);

 private:
  class HeldTicks;

  std::atomic<std::uint64_t> now_ = linuxos::MonotonicTime().now();
  mutable std::atomic<std::uint64_t> reads_ = 0;
  std::mutex mutex_;
  std::vector<HeldTicks*> ticks_;
};

}  // namespace audrel::pwtest
