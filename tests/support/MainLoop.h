#pragma once

#include <glib.h>

#include <chrono>
#include <thread>

/// GLib's main loop of this thread.
namespace audrel::support {

/// Runs it until `condition` holds; whether it does, in time.
template <typename Condition>
bool runLoopUntil(Condition condition,
                  std::chrono::milliseconds timeout = std::chrono::seconds(10)) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    if (g_main_context_iteration(nullptr, FALSE) == FALSE) {
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  }
  return true;
}

inline void runLoopFor(std::chrono::milliseconds duration) {
  runLoopUntil([] { return false; }, duration);
}

/// Does all that is ready to be done.
inline void drainLoop() {
  while (g_main_context_iteration(nullptr, FALSE) == TRUE) {
  }
}

}  // namespace audrel::support
