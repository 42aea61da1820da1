#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <vector>

#include "platform/CoreAudio.h"
#include "platform/linux/pipewire/Downmix.h"
#include "platform/linux/pipewire/GraphClock.h"

namespace audrel::linuxos {

/// Calls an IO procedure so that time goes on without a break: with the audio of the capture
/// stream while there is one, with silence where a cycle was missed or the server is away.
///
/// PipeWire 0.3 wakes a stream that is late for a cycle when the next one has begun and is not all
/// written, and again when it is. So the cycle after a missed one is kept back until another comes,
/// and what comes for it again takes its place.
///
/// One feeder at a time may call in: the capture stream on its data thread, or the silence on the
/// connection's thread. The procedure gets interleaved stereo, 32-bit float.
class Timeline {
 public:
  enum class Feeder { nobody, stream, silence };

  /// `device` is what the procedure is told; `rate` in frames per second.
  Timeline(CA::AudioObjectID device, CA::AudioDeviceIOProc procedure, void* clientData,
           double rate);

  /// Time starts now, at `nsec` of the monotonic clock. While nobody feeds.
  void start(std::uint64_t nsec) { clock_.start(nsec); }

  /// Only `feeder` may feed from now on. On return no other is inside, all that it wrote is
  /// visible here, and what was written here before is visible to `feeder`. Not on the data thread.
  void feedFrom(Feeder feeder);

  /// One cycle of the capture stream, which may be resampled and so longer than the graph's. Takes
  /// no lock and never waits; dropped when the stream is not the feeder.
  void feedCycle(const GraphCycle& cycle, const TapAudio& audio) noexcept;

  /// Silence up to `nsec`, ten seconds at most; nothing when silence is not the feeder.
  void feedSilenceUntil(std::uint64_t nsec) noexcept;

  /// Time ends at `nsec`, ten seconds of silence from where it stands at most, and nobody may feed
  /// any more. As `feedFrom`.
  void finish(std::uint64_t nsec);

  /// How many cycles the stream has brought so far, taken or not. Any thread.
  std::uint64_t cyclesHeard() const { return cyclesHeard_.load(std::memory_order_relaxed); }

  /// How long the last one was. Any thread.
  std::chrono::nanoseconds cycleLength() const {
    return std::chrono::nanoseconds(cycleLength_.load(std::memory_order_relaxed));
  }

  /// Whether somebody feeds right now. Any thread.
  bool isFed() const { return isInside_.load(); }

  /// Frames of audio that did not come. Silence stands for them, except for those that were played
  /// while the driver changed. Any thread.
  std::uint64_t lostFrames() const { return lostFrames_.load(std::memory_order_relaxed); }

 private:
  bool enter(Feeder feeder) noexcept;
  void leave() noexcept;
  void take(const GraphClock::Step& step, const TapAudio& audio) noexcept;
  void takeAgain(const TapAudio& audio) noexcept;
  void keep(const TapAudio& audio) noexcept;
  void deliverKept() noexcept;
  void deliverAudio(const TapAudio& audio) noexcept;
  void deliver(const float* stereo, std::uint32_t frames) noexcept;
  void deliverSilence(std::uint64_t frames) noexcept;

  const CA::AudioObjectID device_;
  const CA::AudioDeviceIOProc procedure_;
  void* const clientData_;
  GraphClock clock_;
  std::vector<float> stereo_;
  std::uint32_t keptFrames_ = 0;  ///< in `stereo_`, not yet delivered
  double sampleTime_ = 0;
  std::atomic<std::uint64_t> lostFrames_ = 0;
  std::atomic<Feeder> feeder_ = Feeder::nobody;
  std::atomic<bool> isInside_ = false;
  std::atomic<std::uint64_t> cyclesHeard_ = 0;
  std::atomic<std::uint64_t> cycleLength_ = 0;
};

}  // namespace audrel::linuxos
