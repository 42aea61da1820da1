#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/support/Waiting.h"

namespace audrel::pwtest {

/// Memory for captured audio, which one thread fills without waiting while another looks at it.
class SampleStore {
 public:
  SampleStore() : samples_(new float[2 * mostFrames]) {}

  /// Interleaved stereo. The filling thread's.
  void append(const float* stereo, std::size_t frames) noexcept;

  /// What cannot be appended: nothing that is stored counts then.
  void fail() noexcept { hasFailed_ = true; }

  /// While nobody fills it.
  void clear() { frames_ = 0; }

  std::size_t frames() const { return frames_.load(std::memory_order_acquire); }
  Audio audio() const;
  bool hasFailed() const { return hasFailed_; }

  /// Waits, for twenty seconds at most; whether there are so many frames then.
  bool waitForFrames(std::size_t count) const;
  bool waitForMore(std::size_t count) const { return waitForFrames(frames() + count); }

 private:
  static constexpr std::size_t mostFrames = 16'000'000;

  std::unique_ptr<float[]> samples_;
  std::atomic<std::size_t> frames_ = 0;
  std::atomic<bool> hasFailed_ = false;
};

using support::waitFor;

}  // namespace audrel::pwtest
