#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/Log.h"
#include "platform/linux/files/Healer.h"

namespace audrel::linuxos {

/// Finishes recordings that were cut off on a thread of its own, which nobody waits for longer than
/// a system call takes. Main thread.
class Healing {
 public:
  /// `rest` is after how long it looks once more for what was written a moment ago.
  Healing(Healer healer, std::shared_ptr<os::Logger> logger,
          std::chrono::milliseconds rest = Healer::rest)
      : healer_(std::move(healer)), logger_(std::move(logger)), rest_(rest) {}
  ~Healing() { end(); }
  Healing(const Healing&) = delete;
  Healing& operator=(const Healing&) = delete;

  /// Before `begin`, or after `end`: is told of what was finished, from that thread.
  void setNoticeTaker(NoticeTaker taker) { healer_.setNoticeTaker(std::move(taker)); }

  /// Goes through the entries, and once more if one of their files was written a moment ago: who
  /// starts again at once after a crash is to have it finished too. Nothing while that is under
  /// way, and after `end`.
  void begin();

  /// Returns once nothing is under way, and for good: what was not finished is found again by the
  /// next process.
  void end();

 private:
  void heal() noexcept;
  void waitForRest();

  Healer healer_;
  std::shared_ptr<os::Logger> logger_;
  std::chrono::milliseconds rest_;
  std::mutex mutex_;
  std::condition_variable ending_;  // of isToEnd_
  std::atomic<bool> isToEnd_ = false;
  std::atomic<bool> isUnderWay_ = false;
  std::thread thread_;
};

}  // namespace audrel::linuxos
