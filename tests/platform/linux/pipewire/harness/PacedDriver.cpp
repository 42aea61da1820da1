#include "tests/platform/linux/pipewire/harness/PacedDriver.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

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

/// 1.x leaves it to the driver when a cycle gets the length and rate that the graph has chosen.
template <typename Clock>
void takeTarget(Clock& clock) {
  if constexpr (requires { clock.target_duration; }) {
    clock.duration = clock.target_duration;
    clock.rate = clock.target_rate;
  }
}

spa_loop* dataLoopOf(pw_context* context) {
  std::uint32_t count = 0;
  const spa_support* support = pw_context_get_support(context, &count);
  return static_cast<spa_loop*>(spa_support_find(support, count, SPA_TYPE_INTERFACE_DataLoop));
}

}  // namespace

const spa_node_methods PacedDriver::nodeMethods = {
    .version = SPA_VERSION_NODE_METHODS,
    .add_listener =
        [](void* self, spa_hook* listener, const spa_node_events* events, void* data) {
          return static_cast<PacedDriver*>(self)->addListener(listener, events, data);
        },
    .set_callbacks =
        [](void* self, const spa_node_callbacks* callbacks, void* data) {
          return static_cast<PacedDriver*>(self)->setCallbacks(callbacks, data);
        },
    .set_io =
        [](void* self, std::uint32_t id, void* area, std::size_t size) {
          return static_cast<PacedDriver*>(self)->setIo(id, area, size);
        },
    .send_command =
        [](void* self, const spa_command* command) {
          return static_cast<PacedDriver*>(self)->sendCommand(command);
        },
    .process = [](void* self) { return static_cast<PacedDriver*>(self)->cycleFinished(); },
};

PacedDriver::PacedDriver(pw_context* context, const std::string& group, double timesRealTime)
    : timesRealTime_(timesRealTime), dataLoop_(dataLoopOf(context)) {
  node_.iface.type = SPA_TYPE_INTERFACE_Node;
  node_.iface.version = SPA_VERSION_NODE;
  node_.iface.cb.funcs = &nodeMethods;
  node_.iface.cb.data = this;
  spa_hook_list_init(&listeners_);

  timer_.fd = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
  timer_.mask = SPA_IO_IN;
  timer_.data = this;
  timer_.func = [](spa_source* source) { static_cast<PacedDriver*>(source->data)->startCycle(); };
  spa_loop_add_source(dataLoop_, &timer_);

  graphNode_ = pw_context_create_node(
      context,
      pw_properties_new(PW_KEY_NODE_NAME, "test-driver", PW_KEY_NODE_DRIVER, "true",
                        PW_KEY_NODE_GROUP, group.c_str(), PW_KEY_PRIORITY_DRIVER, "30000", nullptr),
      0);
  pw_impl_node_set_implementation(graphNode_, &node_);
  pw_impl_node_register(graphNode_, nullptr);
  pw_impl_node_set_active(graphNode_, true);
}

PacedDriver::~PacedDriver() {
  pw_impl_node_destroy(graphNode_);
  spa_loop_remove_source(dataLoop_, &timer_);
  close(timer_.fd);
}

int PacedDriver::addListener(spa_hook* listener, const spa_node_events* events, void* data) {
  spa_hook_list saved{};
  spa_hook_list_isolate(&listeners_, &saved, listener, events, data);
  spa_node_info info{};
  info.change_mask = SPA_NODE_CHANGE_MASK_FLAGS;
  info.flags = SPA_NODE_FLAG_RT;
  spa_node_emit_info(&listeners_, &info);
  spa_hook_list_join(&listeners_, &saved);
  return 0;
}

int PacedDriver::setCallbacks(const spa_node_callbacks* callbacks, void* data) {
  callbacks_.funcs = callbacks;
  callbacks_.data = data;
  return 0;
}

int PacedDriver::setIo(std::uint32_t id, void* area, std::size_t /*size*/) {
  if (id == SPA_IO_Clock) {
    clock_ = static_cast<spa_io_clock*>(area);
    if (area != nullptr) {
      std::snprintf(clock_.load()->name, sizeof clock_.load()->name, "test.driver");
    }
  }
  return 0;
}

int PacedDriver::sendCommand(const spa_command* command) {
  isRunning_ = SPA_NODE_COMMAND_ID(command) == SPA_NODE_COMMAND_Start;
  setTimer(isRunning_ ? now() : 0);
  return 0;
}

void PacedDriver::setTimer(std::int64_t due) const {
  const itimerspec when{.it_interval = {},
                        .it_value = {.tv_sec = due / second, .tv_nsec = due % second}};
  timerfd_settime(timer_.fd, TFD_TIMER_ABSTIME, &when, nullptr);
}

/// The graph has set how long this cycle is to be, and how long the last one was.
void PacedDriver::startCycle() {
  std::uint64_t expirations = 0;
  [[maybe_unused]] const ssize_t size = read(timer_.fd, &expirations, sizeof expirations);
  spa_io_clock* clock = clock_;
  if (!isRunning_ || clock == nullptr) {
    return;
  }
  const std::int64_t start = now();
  const std::uint64_t lastDuration = clock->duration;
  takeTarget(*clock);
  const double period = static_cast<double>(clock->duration) * static_cast<double>(second) /
                        std::max(clock->rate.denom, 1U) / timesRealTime_;
  due_ = std::max(start, due_ + static_cast<std::int64_t>(period));
  clock->nsec = static_cast<std::uint64_t>(start);
  clock->position += lastDuration;
  clock->rate_diff = 1;
  clock->next_nsec = clock->nsec;
  setTimer(start + patience);
  if (isCycleOpen_) {
    cyclesToSettle_ = unsettledCycles;
  }
  isCycleOpen_ = true;
  isStartingCycle_ = true;
  spa_node_call_ready(&callbacks_, SPA_STATUS_HAVE_DATA | SPA_STATUS_NEED_DATA);
  isStartingCycle_ = false;
}

/// Also called, at once, when a cycle is started before the last one has finished.
int PacedDriver::cycleFinished() {
  if (isStartingCycle_ || !isRunning_) {
    return SPA_STATUS_HAVE_DATA | SPA_STATUS_NEED_DATA;
  }
  if (isCycleOpen_ && cyclesToSettle_ > 0) {
    --cyclesToSettle_;
    due_ = now() + settlingTime;
  }
  isCycleOpen_ = false;
  setTimer(std::max(due_, now()));
  return SPA_STATUS_HAVE_DATA | SPA_STATUS_NEED_DATA;
}

}  // namespace audrel::pwtest
