#include "tests/platform/linux/pipewire/harness/PacedDriver.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace audrel::pwtest {

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t patience = 3 * second / 10;

// After a cycle that was given up, nodes may still finish it, which would count as finishing a
// later one: the next cycles each leave time for that before they are followed by another.
constexpr int unsettledCycles = 5;
constexpr std::int64_t settlingTime = second / 100;

std::int64_t now() {
  return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

}  // namespace

PacedDriver::PacedDriver(pw_context* context, const std::string& group, double timesRealTime)
    : timesRealTime_(timesRealTime),
      timer_{
          .func = [](spa_source* source) { static_cast<PacedDriver*>(source->data)->startCycle(); },
          .data = this,
          .fd = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK),
          .mask = SPA_IO_IN},
      driver_(context, group,
              {.started = [this] { setTimer(driver_.isRunning() ? now() : 0); },
               .finished = [this] { cycleFinished(); }}) {
  spa_loop_add_source(driver_.dataLoop(), &timer_);
}

PacedDriver::~PacedDriver() {
  spa_loop_remove_source(driver_.dataLoop(), &timer_);
  close(timer_.fd);
}

void PacedDriver::setTimer(std::int64_t due) const {
  const itimerspec when{.it_interval = {},
                        .it_value = {.tv_sec = due / second, .tv_nsec = due % second}};
  timerfd_settime(timer_.fd, TFD_TIMER_ABSTIME, &when, nullptr);
}

void PacedDriver::startCycle() {
  std::uint64_t expirations = 0;
  [[maybe_unused]] const ssize_t size = read(timer_.fd, &expirations, sizeof expirations);
  const std::int64_t start = now();
  const std::int64_t length = driver_.stampCycle(start);
  if (length == 0) {
    return;
  }
  due_ = std::max(start,
                  due_ + static_cast<std::int64_t>(static_cast<double>(length) / timesRealTime_));
  setTimer(start + patience);
  if (isCycleOpen_) {
    cyclesToSettle_ = unsettledCycles;
  }
  isLastOneOwed_ = isCycleOpen_;
  isCycleOpen_ = true;
  driver_.startCycle();
  isLastOneOwed_ = false;
}

/// Also called, first and at once, when a cycle is started before the last one has finished. A
/// cycle may finish while it is being started, too.
void PacedDriver::cycleFinished() {
  if (std::exchange(isLastOneOwed_, false) || !driver_.isRunning()) {
    return;
  }
  if (isCycleOpen_ && cyclesToSettle_ > 0) {
    --cyclesToSettle_;
    due_ = now() + settlingTime;
  }
  isCycleOpen_ = false;
  setTimer(std::max(due_, now()));
}

}  // namespace audrel::pwtest
