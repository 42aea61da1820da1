#include "tests/platform/linux/pipewire/harness/SampleStore.h"

#include <cstring>

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

}  // namespace audrel::pwtest
