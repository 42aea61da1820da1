// Dispatch queues and the log.

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>
#import <os/log.h>

#include <condition_variable>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/macos/frameworks/FakeMac.h"

using audrel::fakemac::mac;

namespace {

struct Item {
  int number;
  void* context;
  dispatch_function_t work;
};

/// What a queue and its thread share.
struct QueueState {
  std::string label;
  bool isHeld = false;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Item> items;
  int handedOver = 0;
  int waitedFor = 0;  ///< by how many callers
  bool isBusy = false;
  bool isAbandoned = false;

  bool mayRun() const {
    return !isBusy && !items.empty() && (!isHeld || waitedFor > 0 || isAbandoned);
  }
};

/// Returns when there is nothing left to run, and nothing runs.
void waitUntilIdle(QueueState& queue, std::unique_lock<std::mutex>& lock) {
  ++queue.waitedFor;
  queue.changed.notify_all();
  queue.changed.wait(lock, [&] { return !queue.isBusy && queue.items.empty(); });
  --queue.waitedFor;
}

/// Those that were made; one that is gone leaves none.
std::vector<std::weak_ptr<QueueState>>& queues() {
  static auto* const queues = new std::vector<std::weak_ptr<QueueState>>;
  return *queues;
}

struct Threads {
  std::mutex mutex;
  std::condition_variable changed;
  int running = 0;
};

Threads& threads() {
  static auto* const threads = new Threads;
  return *threads;
}

/// One pool for the life of the thread, as a thread of the system's may have: what an item leaves
/// in it lives on.
void runItems(const std::shared_ptr<QueueState>& queue) {
  @autoreleasepool {
    std::unique_lock lock(queue->mutex);
    while (true) {
      queue->changed.wait(lock, [&] {
        return queue->mayRun() || (queue->isAbandoned && !queue->isBusy && queue->items.empty());
      });
      if (queue->items.empty()) {
        break;
      }
      const Item item = queue->items.front();
      queue->items.pop_front();
      queue->isBusy = true;
      lock.unlock();
      mac().note(queue->label + " runs item " + std::to_string(item.number));
      item.work(item.context);
      lock.lock();
      queue->isBusy = false;
      queue->changed.notify_all();
    }
  }
  const std::lock_guard lock(threads().mutex);
  --threads().running;
  threads().changed.notify_all();
}

}  // namespace

@interface FakeQueueAttributes : NSObject <OS_dispatch_queue_attr> {
 @public
  dispatch_qos_class_t _qos;
  unsigned long _frequency;
}
@end

@implementation FakeQueueAttributes
@end

@interface FakeQueue : NSObject <OS_dispatch_queue> {
 @public
  std::shared_ptr<QueueState> _state;
}
@end

@implementation FakeQueue

- (void)dealloc {
  const std::lock_guard lock(_state->mutex);
  _state->isAbandoned = true;
  _state->changed.notify_all();
}

@end

dispatch_queue_attr_t dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t,
                                                              dispatch_qos_class_t qos, int) {
  FakeQueueAttributes* attributes = [[FakeQueueAttributes alloc] init];
  attributes->_qos = qos;
  return attributes;
}

dispatch_queue_attr_t dispatch_queue_attr_make_with_autorelease_frequency(
    dispatch_queue_attr_t attributes, dispatch_autorelease_frequency_t frequency) {
  static_cast<FakeQueueAttributes*>(attributes)->_frequency = frequency;
  return attributes;
}

dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attributes) {
  auto* fake = static_cast<FakeQueueAttributes*>(attributes);
  mac().note(std::string("dispatch_queue_create(") + label + ", qos " + std::to_string(fake->_qos) +
             ", autorelease frequency " + std::to_string(fake->_frequency) + ")");
  FakeQueue* queue = [[FakeQueue alloc] init];
  queue->_state = std::make_shared<QueueState>();
  queue->_state->label = label;
  queue->_state->isHeld = mac().holdsQueues;
  {
    const std::lock_guard lock(threads().mutex);
    ++threads().running;
    queues().push_back(queue->_state);
  }
  std::thread(runItems, queue->_state).detach();
  return queue;
}

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
  const auto state = static_cast<FakeQueue*>(queue)->_state;
  const std::lock_guard lock(state->mutex);
  const int number = ++state->handedOver;
  mac().note("dispatch_async_f(" + state->label + ", item " + std::to_string(number) + ")");
  state->items.push_back({number, context, work});
  state->changed.notify_all();
}

/// On the caller's thread, as the system does where it can.
void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
  const auto state = static_cast<FakeQueue*>(queue)->_state;
  const std::string call = "dispatch_sync_f(" + state->label + ")";
  mac().note(call + " begins");
  std::unique_lock lock(state->mutex);
  waitUntilIdle(*state, lock);
  state->isBusy = true;
  lock.unlock();
  work(context);
  mac().note(call + " ends");
  lock.lock();
  state->isBusy = false;
  state->changed.notify_all();
}

namespace audrel::fakemac {

void runQueues() {
  std::vector<std::shared_ptr<QueueState>> made;
  {
    const std::lock_guard lock(threads().mutex);
    for (const auto& queue : queues()) {
      if (const auto state = queue.lock()) {
        made.push_back(state);
      }
    }
  }
  for (const auto& queue : made) {
    std::unique_lock lock(queue->mutex);
    waitUntilIdle(*queue, lock);
  }
}

void waitForQueues() {
  std::unique_lock lock(threads().mutex);
  threads().changed.wait(lock, [] { return threads().running == 0; });
}

}  // namespace audrel::fakemac

@interface FakeSource : NSObject <OS_dispatch_source> {
 @public
  unsigned long _signal;
  dispatch_function_t _handler;
}
@end

@implementation FakeSource
@end

/// Of those that are active; a source that is gone is nil.
static std::deque<__weak FakeSource*> sources;

struct dispatch_queue_s {
  void* storage[8];
};
struct dispatch_queue_s _dispatch_main_q;
struct dispatch_source_type_s {
  int unused;
};
extern "C" const struct dispatch_source_type_s _dispatch_source_type_signal;
const struct dispatch_source_type_s _dispatch_source_type_signal = {0};

dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t handle, uintptr_t,
                                         dispatch_queue_t queue) {
  const bool isMain = (__bridge void*)queue == static_cast<void*>(&_dispatch_main_q);
  if (type != DISPATCH_SOURCE_TYPE_SIGNAL || !isMain) {
    abort();
  }
  FakeSource* source = [[FakeSource alloc] init];
  source->_signal = handle;
  return source;
}

void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler) {
  static_cast<FakeSource*>(source)->_handler = handler;
}

void dispatch_activate(dispatch_object_t object) {
  sources.push_back(static_cast<FakeSource*>(static_cast<id>(object)));
}

namespace audrel::fakemac {

void deliverSignal(unsigned long number) {
  for (FakeSource* source : sources) {
    if (source != nil && source->_signal == number) {
      source->_handler(nullptr);
    }
  }
}

}  // namespace audrel::fakemac

@interface FakeLog : NSObject <OS_os_log> {
 @public
  std::string _name;
}
@end

@implementation FakeLog
@end

os_log_t os_log_create(const char* subsystem, const char* category) {
  mac().note(std::string("os_log_create(\"") + subsystem + "\", \"" + category + "\")");
  FakeLog* log = [[FakeLog alloc] init];
  log->_name = std::string(subsystem) + " [" + category + "]";
  return log;
}

bool os_log_type_enabled(os_log_t, os_log_type_t) {
  return true;
}

/// Reads what the compiler laid out: two bytes, then for each argument what it is (the low half
/// says 1 private, 2 public; the high one 2 for a C string), its size and itself. Formats with
/// other arguments than C strings are not known here.
void _os_log_impl(void*, os_log_t log, os_log_type_t type, const char* format, uint8_t* arguments,
                  uint32_t) {
  std::string line = format;
  const uint8_t* at = arguments + 2;
  for (int i = 0; i < arguments[1]; ++i) {
    const char* text = nullptr;
    std::memcpy(&text, at + 2, sizeof text);
    const std::string shown = at[0] == 0x22 ? text : "<private>";
    const std::string specifier = "%{public}s";
    const auto place = line.find(specifier);
    line = place == std::string::npos ? line + " <no place>"
                                      : line.replace(place, specifier.size(), shown);
    at += 2 + at[1];
  }
  const char* level = type == OS_LOG_TYPE_ERROR  ? "error"
                      : type == OS_LOG_TYPE_INFO ? "info"
                                                 : "another level";
  mac().note("log " + static_cast<FakeLog*>(log)->_name + " " + level + ": " + line);
}
