#include "tests/fakes/ManualQueue.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace audrel::fakes {

/// The items that wait, and whose turn it is to run them.
class ManualQueue::State {
 public:
  explicit State(Journal& journal) : journal_(journal) {}

  Journal& journal() { return journal_; }

  /// Numbered items show in the journal.
  void submit(dispatch::WorkItem& item) {
    const std::lock_guard lock(mutex_);
    waiting_.push_back({++submitted_, &item});
    journal_.add("writerQueue.async(item " + std::to_string(submitted_) + ")");
  }

  void submitUnnumbered(dispatch::WorkItem& item) {
    const std::lock_guard lock(mutex_);
    waiting_.push_back({0, &item});
  }

  std::size_t pending() const {
    const std::lock_guard lock(mutex_);
    return waiting_.size();
  }

  /// Inside an item it returns at once: those behind it run when it is over.
  void runAll() {
    if (runner_ == std::this_thread::get_id()) {
      return;
    }
    const std::lock_guard turn(turn_);
    runner_ = std::this_thread::get_id();
    while (dispatch::WorkItem* item = takeNext()) {
      item->perform();
    }
    runner_ = std::thread::id();
  }

 private:
  struct Waiting {
    int number;
    dispatch::WorkItem* item;
  };

  dispatch::WorkItem* takeNext() {
    const std::lock_guard lock(mutex_);
    if (waiting_.empty()) {
      return nullptr;
    }
    const Waiting next = waiting_.front();
    waiting_.pop_front();
    if (next.number != 0) {
      journal_.add("writerQueue runs item " + std::to_string(next.number));
    }
    return next.item;
  }

  Journal& journal_;
  mutable std::mutex mutex_;
  std::mutex turn_;
  std::atomic<std::thread::id> runner_ = std::thread::id();
  std::deque<Waiting> waiting_;
  int submitted_ = 0;
};

ManualQueue::ManualQueue(Journal& journal) : state_(std::make_shared<State>(journal)) {}

ManualQueue::~ManualQueue() {
  runAll();
}

std::size_t ManualQueue::pending() const {
  return state_->pending();
}

void ManualQueue::runAll() {
  const auto state = state_;
  state->runAll();
}

void ManualQueue::async(dispatch::WorkItem& item) noexcept {
  state_->submit(item);
}

void ManualQueue::sync(std::function<void()> work) {
  const auto state = state_;
  state->journal().add("writerQueue.sync begins");
  dispatch::WorkItem item;
  item.assign([work = std::move(work)] { work(); });
  state->submitUnnumbered(item);
  state->runAll();
  state->journal().add("writerQueue.sync ends");
}

std::shared_ptr<dispatch::Queue> ManualDispatch::makeQueue(const std::string& label,
                                                           dispatch::QualityOfService qos) {
  journal_.add("makeQueue(" + inQuotes(label) + ", " +
               (qos == dispatch::QualityOfService::userInitiated ? "userInitiated" : "other") +
               ")");
  last_ = std::make_shared<ManualQueue>(journal_);
  return last_;
}

}  // namespace audrel::fakes
