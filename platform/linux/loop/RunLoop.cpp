#include "platform/linux/loop/RunLoop.h"

#include <utility>

#include "platform/linux/loop/LoopSource.h"
#include "platform/linux/loop/RepeatingSchedule.h"

namespace audrel::linuxos {

namespace {

/// Held by its source until it is invalidated, and by whoever may invalidate it.
class LoopTimer final : public NS::Timer {
 public:
  static std::shared_ptr<LoopTimer> start(double interval, std::function<void()> block) {
    auto timer = std::make_shared<LoopTimer>(interval, std::move(block));
    timer->source_ = std::make_unique<LoopSource>([timer] { timer->fire(); });
    timer->waitForNext();
    return timer;
  }

  LoopTimer(double interval, std::function<void()> block)
      : schedule_(LoopSource::now(), interval),
        block_(std::make_shared<std::function<void()>>(std::move(block))) {}

  void invalidate() override {
    block_.reset();
    // Last: this may be all that holds the timer.
    const auto source = std::move(source_);
  }

 private:
  void fire() {
    // The block may invalidate its timer, and must outlast that.
    const auto block = block_;
    (*block)();
    if (source_ != nullptr) {
      waitForNext();
    }
  }

  void waitForNext() { source_->callAt(schedule_.nextAfter(LoopSource::now())); }

  RepeatingSchedule schedule_;
  std::shared_ptr<std::function<void()>> block_;
  std::unique_ptr<LoopSource> source_;
};

}  // namespace

std::shared_ptr<NS::Timer> RunLoop::scheduleRepeatingTimer(double interval,
                                                           std::function<void()> block) {
  return LoopTimer::start(interval, std::move(block));
}

}  // namespace audrel::linuxos
