#pragma once

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <thread>

#include "platform/Dispatch.h"

namespace audrel::linuxos {

/// A `dispatch::Queue` with one worker thread, which runs every item, synchronous ones too.
///
/// Submitting links the item into a list by compare-and-swap: the swaps are the one order of all
/// producers. Whoever finds the list empty wakes the worker by a semaphore; so submitting costs no
/// system call while the worker is behind. The number of waiting items has no bound.
///
/// An item that comes soon after another may wait a tenth of a second, so that the worker wakes
/// less often; `sync` and the destructor never wait for that.
///
/// Callers hold a reference to the queue for as long as `async` or `sync` runs, except that the
/// work given to `sync` may drop it.
class SerialQueue final : public dispatch::Queue {
 public:
  /// Runs, on a thread of its own, while `sync` keeps its caller waiting for more than a second; is
  /// asked to stop when the wait is over, which lasts until it has returned.
  using LongWait = std::function<void(std::stop_token)>;

  /// Starts the worker, with all signals blocked: they belong to the main thread. Throws
  /// `std::system_error` when the system has no thread to give.
  explicit SerialQueue(const std::string& label, LongWait longWait = {});

  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// Returns when all items have run, except inside an item: then they run after it returns.
  ~SerialQueue() override;

  void async(dispatch::WorkItem& item) noexcept override;
  void sync(std::function<void()> work) override;

 private:
  class Inbox;

  /// The worker's too, since it outlives a queue that is destroyed inside an item.
  std::shared_ptr<Inbox> inbox_;
  std::thread worker_;
  LongWait longWait_;
};

}  // namespace audrel::linuxos
