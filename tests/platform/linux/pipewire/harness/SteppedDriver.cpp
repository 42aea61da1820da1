#include "tests/platform/linux/pipewire/harness/SteppedDriver.h"

#include <unistd.h>

#include <iostream>
#include <sstream>
#include <string_view>
#include <utility>

namespace audrel::pwtest {

namespace {

// In each round the server and all clients handle what they were told and what followed from it.
// From an active link to a node that answers its driver it takes more than three: a node that is
// not there yet leaves its first cycle unfinished.
constexpr int roundsToSettle = 20;

void answer(const auto& text) {
  std::cout << text << "\n" << std::flush;
}

}  // namespace

/// Who answers it has handled everything that it was told before.
struct SteppedDriver::Ping {
  SteppedDriver& driver;
  spa_hook hook{};

  explicit Ping(SteppedDriver& driver_) : driver(driver_) {}
  ~Ping() { spa_hook_remove(&hook); }
  Ping(const Ping&) = delete;
  Ping& operator=(const Ping&) = delete;
};

const pw_resource_events SteppedDriver::resourceEvents = {
    .version = PW_VERSION_RESOURCE_EVENTS,
    .destroy =
        [](void* data) {
          const auto& ping = *static_cast<Ping*>(data);
          ping.driver.answered(ping);
        },
    .pong =
        [](void* data, int) {
          const auto& ping = *static_cast<Ping*>(data);
          ping.driver.answered(ping);
        },
};

SteppedDriver::SteppedDriver(pw_main_loop* loop, pw_context* context, const std::string& group)
    : loop_(loop),
      context_(context),
      input_(pw_loop_add_io(
          pw_main_loop_get_loop(loop), STDIN_FILENO, SPA_IO_IN | SPA_IO_HUP, false,
          [](void* self, int, std::uint32_t) { static_cast<SteppedDriver*>(self)->readCommand(); },
          this)),
      driver_(context, group, {.started = [] {}, .finished = [this] { cycleFinished(); }}) {}

SteppedDriver::~SteppedDriver() {
  pw_loop_destroy_source(pw_main_loop_get_loop(loop_), input_);
}

void SteppedDriver::readCommand() {
  std::string line;
  if (!std::getline(std::cin, line)) {
    pw_main_loop_quit(loop_);
    return;
  }
  std::istringstream words(line);
  std::string command;
  Cycle cycle;
  words >> command >> cycle.start;
  if (command == "settle") {
    roundsToGo_ = roundsToSettle;
    settle();
  } else {
    cycle.isAwaited = command == "cycle";
    spa_loop_invoke(
        driver_.dataLoop(),
        [](spa_loop*, bool, std::uint32_t, const void* copy, std::size_t, void* self) {
          static_cast<SteppedDriver*>(self)->startCycle(*static_cast<const Cycle*>(copy));
          return 0;
        },
        0, &cycle, sizeof cycle, false, this);
  }
}

void SteppedDriver::settle() {
  while (pings_.empty() && roundsToGo_ > 0) {
    --roundsToGo_;
    pingAll();
  }
  if (pings_.empty()) {
    answer(driver_.isRunning() ? "runs" : "pauses");
  }
}

void SteppedDriver::pingAll() {
  pw_context_for_each_global(
      context_,
      [](void* data, pw_global* global) {
        auto* self = static_cast<SteppedDriver*>(data);
        if (std::string_view(pw_global_get_type(global)) != PW_TYPE_INTERFACE_Client) {
          return 0;
        }
        auto* client = static_cast<pw_impl_client*>(pw_global_get_object(global));
        if (pw_resource* core = pw_impl_client_get_core_resource(client)) {
          Ping& ping = self->pings_.emplace_back(*self);
          pw_resource_add_listener(core, &ping.hook, &resourceEvents, &ping);
          pw_resource_ping(core, 0);
        }
        return 0;
      },
      this);
}

void SteppedDriver::answered(const Ping& ping) {
  pings_.remove_if([&](const Ping& other) { return &other == &ping; });
  settle();
}

void SteppedDriver::startCycle(const Cycle& cycle) {
  cycleLength_ = driver_.stampCycle(cycle.start);
  if (cycleLength_ > 0) {
    isAwaited_ = cycle.isAwaited;
    isLastOneOwed_ = isUnderWay_;
    isUnderWay_ = true;
    driver_.startCycle();
    isLastOneOwed_ = false;
    if (!isAwaited_) {
      answer(cycleLength_);
    }
  }
}

/// Also called, first and at once, when a cycle is started before the last one has finished. A
/// cycle may finish while it is being started, too: when the others were faster than the sinks
/// here.
void SteppedDriver::cycleFinished() {
  if (std::exchange(isLastOneOwed_, false)) {
    return;
  }
  isUnderWay_ = false;
  if (isAwaited_) {
    answer(cycleLength_);
  }
}

}  // namespace audrel::pwtest
