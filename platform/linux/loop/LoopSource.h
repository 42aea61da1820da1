#pragma once

#include <chrono>
#include <functional>

#include "platform/linux/loop/GLibHandles.h"

namespace audrel::linuxos {

/// Whether a function may be called again while it runs, from an inner loop that it started.
enum class Reentry { refused, allowed };

/// A function on the main loop of the thread that made it, called once for each request. A request
/// replaces one that still waits. It may go, and its owner with it, inside the function. Exact to
/// the loop's precision; never put off to share a wake-up with others.
class LoopSource {
 public:
  explicit LoopSource(std::function<void()> function, Reentry reentry = Reentry::refused);
  ~LoopSource();
  LoopSource(const LoopSource&) = delete;
  LoopSource& operator=(const LoopSource&) = delete;

  /// As soon as the loop comes to it, never from here.
  void callSoon();
  void callAfter(std::chrono::microseconds delay);

  /// At a time of `now`'s clock.
  void callAt(std::chrono::microseconds time);
  void cancel();

  /// The main loop's clock: it never jumps, and stands still while the machine sleeps.
  static std::chrono::microseconds now();

 private:
  SourceHandle source_;
};

}  // namespace audrel::linuxos
