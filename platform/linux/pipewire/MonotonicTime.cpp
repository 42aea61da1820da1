#include "platform/linux/pipewire/MonotonicTime.h"

#include <pipewire/pipewire.h>

#include <utility>

namespace audrel::linuxos {

namespace {

class LoopTicks final : public CaptureTime::Ticks {
 public:
  LoopTicks(pw_loop* loop, std::function<void()> tick)
      : loop_(loop),
        tick_(std::move(tick)),
        timer_(pw_loop_add_timer(
            loop, [](void* self, std::uint64_t) { static_cast<LoopTicks*>(self)->tick_(); },
            this)) {}
  ~LoopTicks() override {
    if (timer_ != nullptr) {
      pw_loop_destroy_source(loop_, timer_);
    }
  }
  LoopTicks(const LoopTicks&) = delete;
  LoopTicks& operator=(const LoopTicks&) = delete;

  bool hasTimer() const { return timer_ != nullptr; }

  void setPeriod(std::chrono::nanoseconds period) override {
    timespec every{.tv_sec = 0, .tv_nsec = period.count()};
    pw_loop_update_timer(loop_, timer_, &every, &every, false);
  }

 private:
  pw_loop* loop_;
  std::function<void()> tick_;
  spa_source* timer_;
};

}  // namespace

std::uint64_t MonotonicTime::now() const noexcept {
  return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch() /
                                    std::chrono::nanoseconds(1));
}

std::unique_ptr<CaptureTime::Ticks> MonotonicTime::makeTicks(pw_loop* loop,
                                                             std::function<void()> tick) {
  auto ticks = std::make_unique<LoopTicks>(loop, std::move(tick));
  return ticks->hasTimer() ? std::move(ticks) : nullptr;
}

}  // namespace audrel::linuxos
