#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

/// Serial queues, as Grand Central Dispatch has them.
namespace dispatch {

/// A piece of work that a queue takes without allocating: the callable is stored in place, and the
/// item itself is the queue's link. It may live inside what its callable owns, since the callable
/// is moved out before it is called. An item that was given work must be submitted, once.
class WorkItem {
 public:
  WorkItem() = default;
  WorkItem(const WorkItem&) = delete;
  WorkItem& operator=(const WorkItem&) = delete;

  /// `work` must fit in place and move without throwing; it must not throw when called.
  template <typename Work>
  void assign(Work work) noexcept {
    static_assert(sizeof(Work) <= capacity);
    static_assert(alignof(Work) <= alignof(std::max_align_t));
    static_assert(std::is_nothrow_move_constructible_v<Work>);
    new (storage_) Work(std::move(work));
    perform_ = [](std::byte* storage) noexcept {
      auto* stored = std::launder(reinterpret_cast<Work*>(storage));
      Work taken(std::move(*stored));
      stored->~Work();
      taken();
    };
  }

  /// Calls the work and destroys it. The item may be gone when this returns.
  void perform() noexcept { perform_(storage_); }

  /// The link of the queue that holds the item; nobody else's.
  WorkItem* next = nullptr;

 private:
  static constexpr std::size_t capacity = 64;

  void (*perform_)(std::byte*) noexcept = nullptr;
  alignas(std::max_align_t) std::byte storage_[capacity];
};

/// Runs items one at a time, in the one order in which they were submitted, whichever thread
/// submitted them. An item's work is destroyed before the next item is taken, and before `sync`
/// returns. Items submitted before the last reference to the queue goes still run; that reference
/// may go inside an item.
class Queue {
 public:
  virtual ~Queue() = default;

  /// Submits with no group, unspecified quality of service and no flags. Takes no lock, never
  /// waits, allocates nothing; any thread. `item` must live until its work has been moved out.
  virtual void async(WorkItem& item) noexcept = 0;

  /// Submits `work` and returns when it has run and is destroyed. Must not be called from an item
  /// of the same queue. `work` may run on any thread, the caller's included.
  virtual void sync(std::function<void()> work) = 0;
};

enum class QualityOfService { userInitiated };

class Dispatch {
 public:
  virtual ~Dispatch() = default;

  /// A queue with no attributes (so it is serial), its target's autorelease frequency and no
  /// target queue.
  virtual std::shared_ptr<Queue> makeQueue(const std::string& label, QualityOfService qos) = 0;
};

}  // namespace dispatch
