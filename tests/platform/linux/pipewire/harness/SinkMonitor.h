#pragma once

#include <string>

#include "tests/platform/linux/pipewire/harness/Client.h"
#include "tests/platform/linux/pipewire/harness/SampleStore.h"

namespace audrel::pwtest {

/// Listens to what the default sink plays. The session manager links it.
class SinkMonitor {
 public:
  explicit SinkMonitor(const std::string& socketPath);
  ~SinkMonitor();
  SinkMonitor(const SinkMonitor&) = delete;
  SinkMonitor& operator=(const SinkMonitor&) = delete;

  const SampleStore& samples() const { return samples_; }

  /// Waits until it has handled what the server told it: after that, what is linked is heard.
  void roundTrip() { client_.roundTrip(); }

  /// No more is stored after this.
  void stop() { client_.stop(); }

  static constexpr const char* mediaClass = "Test/Monitor";

 private:
  void process() noexcept;

  static const pw_stream_events streamEvents;

  SampleStore samples_;
  Client client_;
  spa_hook hook_{};
  OwnedStream stream_;
};

}  // namespace audrel::pwtest
