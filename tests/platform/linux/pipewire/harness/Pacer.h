#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "tests/platform/linux/pipewire/harness/Client.h"

struct spa_io_position;

namespace audrel::pwtest {

/// Takes part in a freewheeling graph so that it runs at a limited multiple of real time: every
/// cycle waits for it. Otherwise a second of the test would be ten minutes of audio.
class Pacer {
 public:
  Pacer(const std::string& socketPath, double timesRealTime);
  ~Pacer();
  Pacer(const Pacer&) = delete;
  Pacer& operator=(const Pacer&) = delete;

 private:
  void process() noexcept;

  static const pw_stream_events streamEvents;

  double timesRealTime_;
  std::atomic<const spa_io_position*> position_ = nullptr;
  std::int64_t due_ = 0;  ///< nanoseconds
  Client client_;
  spa_hook hook_{};
  OwnedStream stream_;
};

}  // namespace audrel::pwtest
