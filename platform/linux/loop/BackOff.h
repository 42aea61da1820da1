#pragma once

#include <chrono>
#include <functional>

#include "platform/linux/loop/LoopSource.h"

namespace audrel::linuxos {

/// Attempts at something that may come to be possible: ever more slowly, down to two a minute. Main
/// thread.
class BackOff {
 public:
  /// `attempt` is called from the main loop. The first one that follows a failure does so after
  /// `first`, each further one after twice the time.
  BackOff(std::chrono::milliseconds first, std::function<void()> attempt);

  /// As soon as the loop comes to it.
  void attemptSoon() { attempt_.callSoon(); }

  /// An attempt failed: makes another.
  void attemptAgain();

  /// An attempt succeeded, or none is to be made for now.
  void reset();

 private:
  const std::chrono::milliseconds first_;
  std::chrono::milliseconds next_;
  LoopSource attempt_;
};

}  // namespace audrel::linuxos
