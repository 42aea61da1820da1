#include "platform/linux/pipewire/Timeline.h"

#include <algorithm>
#include <thread>

namespace audrel::linuxos {

namespace {

constexpr std::uint32_t channels = 2;
constexpr std::uint32_t audioBlock = 8192;    // frames: the largest quantum that a graph uses
constexpr std::uint32_t silenceBlock = 1024;  // frames
constexpr float silence[silenceBlock * channels] = {};

}  // namespace

Timeline::Timeline(CA::AudioObjectID device, CA::AudioDeviceIOProc procedure, void* clientData,
                   double rate)
    : device_(device),
      procedure_(procedure),
      clientData_(clientData),
      clock_(rate),
      stereo_(std::size_t{audioBlock} * channels) {}

// Both sides write their own flag and then read the other's, in one order for all, so that at
// least one of them sees the other: a feeder that goes on has been seen, and is waited for.
void Timeline::feedFrom(Feeder feeder) {
  feeder_.store(feeder);
  while (isInside_.load()) {
    std::this_thread::yield();
  }
}

bool Timeline::enter(Feeder feeder) noexcept {
  isInside_.store(true);
  if (feeder_.load() == feeder) {
    return true;
  }
  leave();
  return false;
}

void Timeline::leave() noexcept {
  isInside_.store(false);
}

void Timeline::feedCycle(const GraphCycle& cycle, const TapAudio& audio) noexcept {
  cyclesHeard_.fetch_add(1, std::memory_order_relaxed);
  cycleLength_.store(lengthOf(cycle), std::memory_order_relaxed);
  if (!enter(Feeder::stream)) {
    return;
  }
  const auto step = clock_.advance(cycle);
  if (step.isRepeated) {
    takeAgain(audio);
  } else {
    take(step, audio);
  }
  leave();
}

void Timeline::take(const GraphClock::Step& step, const TapAudio& audio) noexcept {
  deliverKept();
  lostFrames_.fetch_add(step.unheard, std::memory_order_relaxed);
  deliverSilence(step.missing);
  if (!step.takesCycle) {
    return;
  }
  if (step.missing > 0 && audio.frames <= audioBlock) {
    keep(audio);
  } else {
    deliverAudio(audio);
  }
}

/// Where the first reading is delivered already, it may have been torn.
void Timeline::takeAgain(const TapAudio& audio) noexcept {
  if (keptFrames_ > 0) {
    keep(audio);
  } else {
    lostFrames_.fetch_add(audio.frames, std::memory_order_relaxed);
  }
}

void Timeline::keep(const TapAudio& audio) noexcept {
  keptFrames_ = std::min(audio.frames, audioBlock);
  readStereo(audio, 0, keptFrames_, stereo_.data());
}

void Timeline::deliverKept() noexcept {
  if (keptFrames_ > 0) {
    deliver(stereo_.data(), keptFrames_);
    keptFrames_ = 0;
  }
}

void Timeline::feedSilenceUntil(std::uint64_t nsec) noexcept {
  if (!enter(Feeder::silence)) {
    return;
  }
  deliverKept();
  deliverSilence(clock_.advanceTo(nsec));
  leave();
}

void Timeline::finish(std::uint64_t nsec) {
  feedFrom(Feeder::nobody);
  deliverKept();
  deliverSilence(clock_.finish(nsec));
}

void Timeline::deliverSilence(std::uint64_t frames) noexcept {
  lostFrames_.fetch_add(frames, std::memory_order_relaxed);
  while (frames > 0) {
    const auto block = static_cast<std::uint32_t>(std::min<std::uint64_t>(frames, silenceBlock));
    deliver(silence, block);
    frames -= block;
  }
}

void Timeline::deliverAudio(const TapAudio& audio) noexcept {
  for (std::uint32_t first = 0; first < audio.frames; first += audioBlock) {
    const std::uint32_t frames = std::min(audio.frames - first, audioBlock);
    readStereo(audio, first, frames, stereo_.data());
    deliver(stereo_.data(), frames);
  }
}

void Timeline::deliver(const float* stereo, std::uint32_t frames) noexcept {
  CA::AudioTimeStamp time;
  time.mSampleTime = sampleTime_;
  CA::AudioBufferList input{
      .mNumberBuffers = 1,
      .mBuffers = {{.mNumberChannels = channels,
                    .mDataByteSize = frames * channels * static_cast<std::uint32_t>(sizeof(float)),
                    // The procedure gets the list as read-only; the type has no const data.
                    .mData = const_cast<float*>(stereo)}}};
  CA::AudioBufferList output{};
  procedure_(device_, &time, &input, &time, &output, &time, clientData_);
  sampleTime_ += frames;
}

}  // namespace audrel::linuxos
