#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include "tests/fakes/FakeHardware.h"

namespace audrel::fakes {

/// The IO thread of a `FakeHardware`: calls `deliver` again and again while the device runs. It
/// synchronises with the main thread by nothing more than what the hardware layer promises, so that
/// no race of an engine's is hidden from the thread sanitizer. One device at a time.
class IOThread {
 public:
  IOThread(FakeHardware& hardware, std::function<void()> deliver);
  IOThread(const IOThread&) = delete;
  IOThread& operator=(const IOThread&) = delete;
  ~IOThread();

 private:
  /// What main asks of the thread, and what that has come to.
  enum class Phase { stopped, running, stopping, ended };

  void deliverUntilEnded();
  void stop();

  const std::function<void()> deliver_;
  std::atomic<Phase> phase_ = Phase::stopped;
  std::thread thread_;
};

}  // namespace audrel::fakes
