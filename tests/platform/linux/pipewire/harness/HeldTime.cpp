#include "tests/platform/linux/pipewire/harness/HeldTime.h"

#include <pipewire/pipewire.h>

#include <algorithm>
#include <semaphore>
#include <utility>

namespace audrel::pwtest {

namespace {

constexpr std::uint64_t never = UINT64_MAX;

}  // namespace

class HeldTime::HeldTicks final : public linuxos::CaptureTime::Ticks {
 public:
  HeldTicks(HeldTime& time, pw_loop* loop, std::function<void()> tick)
      : time_(time),
        loop_(loop),
        tick_(std::move(tick)),
        event_(pw_loop_add_event(
            loop,
            [](void* self, std::uint64_t) {
              static_cast<HeldTicks*>(self)->tick_();
              static_cast<HeldTicks*>(self)->told_.release();
            },
            this)) {
    const std::lock_guard lock(time_.mutex_);
    time_.ticks_.push_back(this);
  }
  ~HeldTicks() override {
    {
      const std::lock_guard lock(time_.mutex_);
      std::erase(time_.ticks_, this);
    }
    pw_loop_destroy_source(loop_, event_);
  }
  HeldTicks(const HeldTicks&) = delete;
  HeldTicks& operator=(const HeldTicks&) = delete;

  void setPeriod(std::chrono::nanoseconds period) override {
    period_ = static_cast<std::uint64_t>(period.count());
    due_ = period_ == 0 ? never : time_.now() + period_;
  }

  std::uint64_t due() const { return due_; }

  /// Waits until it is told.
  void tell() {
    due_ += period_;
    pw_loop_signal_event(loop_, event_);
    told_.acquire();
  }

 private:
  HeldTime& time_;
  pw_loop* loop_;
  std::function<void()> tick_;
  spa_source* event_;
  std::binary_semaphore told_{0};
  std::atomic<std::uint64_t> period_ = 0;
  std::atomic<std::uint64_t> due_ = never;
};

std::unique_ptr<linuxos::CaptureTime::Ticks> HeldTime::makeTicks(pw_loop* loop,
                                                                 std::function<void()> tick) {
  return std::make_unique<HeldTicks>(*this, loop, std::move(tick));
}

void HeldTime::pass(std::chrono::nanoseconds duration) {
  const std::uint64_t end = now_ + static_cast<std::uint64_t>(duration.count());
  const auto next = [this]() -> HeldTicks* {
    const std::lock_guard lock(mutex_);
    const auto first = std::ranges::min_element(ticks_, {}, &HeldTicks::due);
    return first == ticks_.end() ? nullptr : *first;
  };
  for (HeldTicks* ticks = next(); ticks != nullptr && ticks->due() <= end; ticks = next()) {
    now_ = ticks->due();
    ticks->tell();
  }
  now_ = end;
}

}  // namespace audrel::pwtest
