#include "platform/linux/system/SerialQueue.h"

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <exception>
#include <string_view>
#include <utility>

#include "platform/linux/system/AllSignalsBlocked.h"
#include "platform/linux/system/Semaphore.h"

namespace audrel::linuxos {

namespace {

/// Longest thread name that Linux takes, without its terminator.
constexpr std::size_t longestThreadName = 15;

/// The last dot-separated components of `label` that fit a thread's name, since the first ones of
/// a reverse domain name tell nothing apart.
std::string threadName(std::string_view label) {
  while (label.size() > longestThreadName) {
    const auto dot = label.find('.');
    if (dot == std::string_view::npos) {
      return std::string(label.substr(0, longestThreadName));
    }
    label.remove_prefix(dot + 1);
  }
  return std::string(label);
}

/// How long items are gathered, once the first has run, before they are performed together: a
/// recording's file then costs a tenth of the wake-ups of one for each cycle, and its encoder works
/// on warm caches.
constexpr auto gathering = std::chrono::milliseconds(100);

/// After it a wait in `sync` is long.
constexpr auto patience = std::chrono::seconds(1);

/// Waits beside `longWait`; without it where the system has no thread or no memory to give: what is
/// waited for uses the caller's stack.
void waitLong(Semaphore& done, const SerialQueue::LongWait& longWait) {
  std::jthread beside;
  try {
    const AllSignalsBlocked blocked;
    beside = std::jthread(longWait);
  } catch (const std::exception&) {
  }
  done.wait();
}

}  // namespace

/// The items that wait, newest first, and the wake-ups: one for each time the list stops being
/// empty, one for the end. The worker empties the list once a wake-up, so an empty list is the end.
class SerialQueue::Inbox {
 public:
  /// Somebody waits for the item, or for the end.
  void submitUrgent(dispatch::WorkItem& item) noexcept {
    submit(item);
    hurry_.post();
  }

  void submit(dispatch::WorkItem& item) noexcept {
    auto* newest = newest_.load(std::memory_order_relaxed);
    do {
      item.next = newest;
    } while (!newest_.compare_exchange_weak(newest, &item, std::memory_order_release,
                                            std::memory_order_relaxed));
    if (newest == nullptr) {
      wakeUps_.post();
    }
  }

  void close() noexcept {
    wakeUps_.post();
    hurry_.post();
  }

  void runUntilClosed() noexcept {
    while (auto* item = takeOldest()) {
      while (item != nullptr) {
        auto* const following = item->next;
        item->perform();
        item = following;
      }
      gather();
    }
  }

 private:
  /// All items, oldest first; null at the end.
  dispatch::WorkItem* takeOldest() noexcept {
    wakeUps_.wait();
    auto* item = newest_.exchange(nullptr, std::memory_order_acquire);
    dispatch::WorkItem* oldest = nullptr;
    while (item != nullptr) {
      auto* const older = item->next;
      item->next = oldest;
      oldest = item;
      item = older;
    }
    return oldest;
  }

  void gather() noexcept {
    if (hurry_.waitFor(gathering)) {
      while (hurry_.waitFor(std::chrono::nanoseconds(0))) {
      }
    }
  }

  std::atomic<dispatch::WorkItem*> newest_ = nullptr;
  Semaphore wakeUps_;
  /// Cuts the gathering short, this one or else the next.
  Semaphore hurry_;
};

SerialQueue::SerialQueue(const std::string& label, LongWait longWait)
    : inbox_(std::make_shared<Inbox>()), longWait_(std::move(longWait)) {
  const AllSignalsBlocked blocked;
  worker_ = std::thread([inbox = inbox_, name = threadName(label)]() noexcept {
    pthread_setname_np(pthread_self(), name.c_str());
    inbox->runUntilClosed();
  });
}

SerialQueue::~SerialQueue() {
  inbox_->close();
  if (worker_.get_id() == std::this_thread::get_id()) {
    worker_.detach();
  } else {
    worker_.join();
  }
}

void SerialQueue::async(dispatch::WorkItem& item) noexcept {
  inbox_->submit(item);
}

void SerialQueue::sync(std::function<void()> work) {
  const LongWait longWait = longWait_;  // the work may drop the queue
  Semaphore done;
  dispatch::WorkItem item;
  item.assign([&work, &done]() noexcept {
    work();
    work = nullptr;
    done.post();
  });
  inbox_->submitUrgent(item);
  if (!longWait) {
    done.wait();
  } else if (!done.waitFor(patience)) {
    waitLong(done, longWait);
  }
}

}  // namespace audrel::linuxos
