#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/Dispatch.h"
#include "tests/fakes/Journal.h"

namespace audrel::fakes {

/// A queue whose items run when the test says so, on the test's thread; or when something waits
/// for them: `sync` first runs all that came before. Items may be submitted on any thread; they
/// run on one at a time.
class ManualQueue final : public dispatch::Queue {
 public:
  explicit ManualQueue(Journal& journal);
  ManualQueue(const ManualQueue&) = delete;
  ManualQueue& operator=(const ManualQueue&) = delete;

  /// Runs what is left; inside an item, after that item.
  ~ManualQueue() override;

  std::size_t pending() const;
  void runAll();

  void async(dispatch::WorkItem& item) noexcept override;
  void sync(std::function<void()> work) override;

 private:
  class State;

  /// Of the running thread too, since an item may drop the last reference to the queue.
  std::shared_ptr<State> state_;
};

/// Makes `ManualQueue`s and keeps track of them.
class ManualDispatch final : public dispatch::Dispatch {
 public:
  explicit ManualDispatch(Journal& journal) : journal_(journal) {}

  /// The last queue that was made, kept alive here as well.
  ManualQueue& queue() { return *last_; }

  std::shared_ptr<dispatch::Queue> makeQueue(const std::string& label,
                                             dispatch::QualityOfService qos) override;

 private:
  Journal& journal_;
  std::shared_ptr<ManualQueue> last_;
};

}  // namespace audrel::fakes
