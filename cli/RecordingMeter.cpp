#include "cli/RecordingMeter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>

#include "cli/Numbers.h"

namespace audrel::cli {

namespace {

float peakOfSamples(std::span<const float> samples) {
  float peak = 0;
  for (const float sample : samples) {
    const float magnitude = std::fabs(sample);
    if (magnitude > peak) {
      peak = magnitude;
    }
  }
  return peak;
}

}  // namespace

std::optional<float> peakOf(AV::PCMBuffer& buffer) {
  if (buffer.format().commonFormat() != AV::AudioCommonFormat::pcmFormatFloat32) {
    return std::nullopt;
  }
  const auto* list = buffer.mutableAudioBufferList();
  float peak = 0;
  for (const auto& part : std::span(list->mBuffers, list->mNumberBuffers)) {
    if (part.mData != nullptr) {
      const auto* samples = static_cast<const float*>(part.mData);
      peak = std::fmax(peak, peakOfSamples({samples, part.mDataByteSize / sizeof(float)}));
    }
  }
  return peak;
}

std::optional<double> decibels(float peak) {
  if (!(peak > 0)) {
    return std::nullopt;
  }
  constexpr double decibelsPerDecade = 20;
  return decibelsPerDecade * std::log10(static_cast<double>(peak));
}

std::string describePeak(float peak) {
  const auto level = decibels(peak);
  return level.has_value() ? withDecimals(*level, 1) + " dBFS" : "silence";
}

void RecordingMeter::add(std::uint32_t frames, double sampleRate, std::optional<float> peak) {
  const std::scoped_lock lock(mutex_);
  total_.frames += frames;
  lastFrames_ = frames;
  total_.sampleRate = sampleRate;
  // Nothing is less than any peak.
  total_.peak = std::max(total_.peak, peak);
  recentPeak_ = std::max(recentPeak_, peak);
}

void RecordingMeter::addFailure(const NS::Error& error) {
  const std::scoped_lock lock(mutex_);
  if (total_.failedWrites == 0) {
    total_.firstFailure = error.localizedDescription;
  }
  ++total_.failedWrites;
  total_.failedFrames += lastFrames_;
  framesAtFailure_ = total_.frames;
  if (error.localizedDescription != lastFailure_) {
    lastFailure_ = error.localizedDescription;
    newFailure_ = lastFailure_;
  }
}

RecordedAudio RecordingMeter::total() const {
  const std::scoped_lock lock(mutex_);
  return total_;
}

bool RecordingMeter::isFailing() const {
  const std::scoped_lock lock(mutex_);
  return total_.failedWrites > 0 &&
         static_cast<double>(total_.frames - framesAtFailure_) < total_.sampleRate;
}

bool RecordingMeter::hasClipped() const {
  const std::scoped_lock lock(mutex_);
  return total_.peak > 1.0F;
}

std::optional<std::string> RecordingMeter::takeNewFailure() {
  const std::scoped_lock lock(mutex_);
  return std::exchange(newFailure_, std::nullopt);
}

std::optional<float> RecordingMeter::takeRecentPeak() {
  const std::scoped_lock lock(mutex_);
  return std::exchange(recentPeak_, std::nullopt);
}

}  // namespace audrel::cli
