#include "tests/platform/linux/pipewire/harness/SampleStore.h"

#include <chrono>
#include <cstring>
#include <thread>

namespace audrel::pwtest {

void SampleStore::append(const float* stereo, std::size_t frames) noexcept {
  const std::size_t stored = frames_.load(std::memory_order_relaxed);
  if (stored + frames > mostFrames) {
    fail();
    return;
  }
  std::memcpy(samples_.get() + 2 * stored, stereo, 2 * frames * sizeof(float));
  frames_.store(stored + frames, std::memory_order_release);
}

Audio SampleStore::audio() const {
  return {samples_.get(), samples_.get() + 2 * frames()};
}

bool SampleStore::waitForFrames(std::size_t count) const {
  return waitFor([&] { return frames() >= count; });
}

bool waitFor(const std::function<bool()>& condition) {
  using namespace std::chrono_literals;
  const auto deadline = std::chrono::steady_clock::now() + 20s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(2ms);
  }
  return true;
}

}  // namespace audrel::pwtest
