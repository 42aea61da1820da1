#pragma once

#include <memory>
#include <string>
#include <thread>

#include "platform/Dispatch.h"

namespace audrel::fakes {

/// A queue with a thread of its own. It synchronises its submitters with nothing but the hand-over
/// itself, so that under the thread sanitizer nothing else hides a race of theirs.
class ThreadQueue final : public dispatch::Queue {
 public:
  ThreadQueue();
  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;

  /// Waits for what was submitted; inside an item it leaves that to the thread.
  ~ThreadQueue() override;

  void async(dispatch::WorkItem& item) noexcept override;
  void sync(std::function<void()> work) override;

 private:
  class Inbox;

  std::shared_ptr<Inbox> inbox_;
  std::thread thread_;
};

class ThreadDispatch final : public dispatch::Dispatch {
 public:
  std::shared_ptr<dispatch::Queue> makeQueue(const std::string& label,
                                             dispatch::QualityOfService qos) override;
};

}  // namespace audrel::fakes
