#include "tests/platform/linux/pipewire/harness/Driver.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace audrel::pwtest {

namespace {

constexpr std::uint64_t second = 1'000'000'000;

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

const spa_node_methods Driver::nodeMethods = {
    .version = SPA_VERSION_NODE_METHODS,
    .add_listener =
        [](void* self, spa_hook* listener, const spa_node_events* events, void* data) {
          return static_cast<Driver*>(self)->addListener(listener, events, data);
        },
    .set_callbacks =
        [](void* self, const spa_node_callbacks* callbacks, void* data) {
          return static_cast<Driver*>(self)->setCallbacks(callbacks, data);
        },
    .set_io = [](void* self, std::uint32_t id, void* area,
                 std::size_t size) { return static_cast<Driver*>(self)->setIo(id, area, size); },
    .send_command =
        [](void* self, const spa_command* command) {
          return static_cast<Driver*>(self)->sendCommand(command);
        },
    .process =
        [](void* self) {
          static_cast<Driver*>(self)->events_.finished();
          return SPA_STATUS_HAVE_DATA | SPA_STATUS_NEED_DATA;
        },
};

Driver::Driver(pw_context* context, const std::string& group, Events events)
    : events_(std::move(events)), dataLoop_(dataLoopOf(context)) {
  node_.iface.type = SPA_TYPE_INTERFACE_Node;
  node_.iface.version = SPA_VERSION_NODE;
  node_.iface.cb.funcs = &nodeMethods;
  node_.iface.cb.data = this;
  spa_hook_list_init(&listeners_);
  graphNode_ = pw_context_create_node(
      context,
      pw_properties_new(PW_KEY_NODE_NAME, "test-driver", PW_KEY_NODE_DRIVER, "true",
                        PW_KEY_NODE_GROUP, group.c_str(), PW_KEY_PRIORITY_DRIVER, "30000", nullptr),
      0);
  pw_impl_node_set_implementation(graphNode_, &node_);
  pw_impl_node_register(graphNode_, nullptr);
  pw_impl_node_set_active(graphNode_, true);
}

Driver::~Driver() {
  pw_impl_node_destroy(graphNode_);
}

int Driver::addListener(spa_hook* listener, const spa_node_events* events, void* data) {
  spa_hook_list saved{};
  spa_hook_list_isolate(&listeners_, &saved, listener, events, data);
  spa_node_info info{};
  info.change_mask = SPA_NODE_CHANGE_MASK_FLAGS;
  info.flags = SPA_NODE_FLAG_RT;
  spa_node_emit_info(&listeners_, &info);
  spa_hook_list_join(&listeners_, &saved);
  return 0;
}

int Driver::setCallbacks(const spa_node_callbacks* callbacks, void* data) {
  callbacks_.funcs = callbacks;
  callbacks_.data = data;
  return 0;
}

int Driver::setIo(std::uint32_t id, void* area, std::size_t /*size*/) {
  if (id == SPA_IO_Clock) {
    clock_ = static_cast<spa_io_clock*>(area);
    if (area != nullptr) {
      std::snprintf(clock_.load()->name, sizeof clock_.load()->name, "test.driver");
    }
  }
  return 0;
}

int Driver::sendCommand(const spa_command* command) {
  isRunning_ = SPA_NODE_COMMAND_ID(command) == SPA_NODE_COMMAND_Start;
  events_.started();
  return 0;
}

std::int64_t Driver::stampCycle(std::int64_t nsec) {
  spa_io_clock* clock = clock_;
  if (!isRunning_ || clock == nullptr) {
    return 0;
  }
  takeTarget(*clock);
  clock->nsec = static_cast<std::uint64_t>(nsec);
  clock->next_nsec = clock->nsec;
  clock->position += lastDuration_;
  clock->rate_diff = 1;
  return static_cast<std::int64_t>(clock->duration * second / std::max(clock->rate.denom, 1U));
}

void Driver::startCycle() {
  spa_node_call_ready(&callbacks_, SPA_STATUS_HAVE_DATA | SPA_STATUS_NEED_DATA);
  // 0.3 has set just now how long this cycle is, and the server may write another duration before
  // the next.
  lastDuration_ = clock_.load()->duration;
}

}  // namespace audrel::pwtest
