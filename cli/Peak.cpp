#include "cli/Peak.h"

#include <cmath>
#include <cstddef>
#include <span>

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

}  // namespace audrel::cli
