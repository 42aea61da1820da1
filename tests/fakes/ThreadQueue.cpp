#include "tests/fakes/ThreadQueue.h"

#include <atomic>
#include <semaphore>
#include <utility>

namespace audrel::fakes {

/// A list that takes at one end and is emptied at once, then turned round: the swaps of its head
/// are the one order of all submitters.
class ThreadQueue::Inbox {
 public:
  void push(dispatch::WorkItem& item) {
    dispatch::WorkItem* head = head_.load(std::memory_order_relaxed);
    do {
      item.next = head;
    } while (!head_.compare_exchange_weak(head, &item, std::memory_order_release,
                                          std::memory_order_relaxed));
    available_.release();
  }

  void close() {
    isClosed_.store(true, std::memory_order_release);
    available_.release();
  }

  void runUntilClosed() {
    while (true) {
      available_.acquire();
      const bool closing = isClosed_.load(std::memory_order_acquire);
      dispatch::WorkItem* item = takeOldestFirst();
      while (item != nullptr) {
        dispatch::WorkItem* const following = item->next;
        item->perform();
        item = following;
      }
      if (closing) {
        return;
      }
    }
  }

 private:
  dispatch::WorkItem* takeOldestFirst() {
    dispatch::WorkItem* newest = head_.exchange(nullptr, std::memory_order_acquire);
    dispatch::WorkItem* oldest = nullptr;
    while (newest != nullptr) {
      oldest = std::exchange(newest, std::exchange(newest->next, oldest));
    }
    return oldest;
  }

  std::atomic<dispatch::WorkItem*> head_ = nullptr;
  std::atomic<bool> isClosed_ = false;
  std::counting_semaphore<> available_{0};
};

ThreadQueue::ThreadQueue()
    : inbox_(std::make_shared<Inbox>()), thread_([inbox = inbox_] { inbox->runUntilClosed(); }) {}

ThreadQueue::~ThreadQueue() {
  inbox_->close();
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

void ThreadQueue::async(dispatch::WorkItem& item) noexcept {
  inbox_->push(item);
}

void ThreadQueue::sync(std::function<void()> work) {
  std::binary_semaphore isDone{0};
  dispatch::WorkItem item;
  item.assign([&work, &isDone] {
    work();
    work = nullptr;
    isDone.release();
  });
  inbox_->push(item);
  isDone.acquire();
}

std::shared_ptr<dispatch::Queue> ThreadDispatch::makeQueue(const std::string& /*label*/,
                                                           dispatch::QualityOfService /*qos*/) {
  return std::make_shared<ThreadQueue>();
}

}  // namespace audrel::fakes
