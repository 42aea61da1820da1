#pragma once

#include <chrono>

#include "tests/platform/linux/pipewire/harness/TestServer.h"

namespace audrel::pwtest {

/// An unmodified server in real time, at 48 kHz.
inline ServerOptions realTime() {
  ServerOptions options;
  options.timesRealTime.reset();
  return options;
}

/// Tells how much audio should have been recorded since it was made. On a busy machine a call takes
/// its time: a recording is at least as long as it was from the start's return to the stop's call,
/// and at most as long as from the start's call to the stop's return.
class Stopwatch {
 public:
  double frames() const {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
    return 48000 * elapsed.count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace audrel::pwtest
