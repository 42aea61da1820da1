#include "platform/linux/files/SampleConversion.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "platform/linux/files/PcmFormat.h"

namespace audrel::linuxos {
namespace {

/// Above every sum of streams that can be meant, below what an encoder takes for infinite.
constexpr float floatLimit = 16;

template <typename Sample>
Sample load(const std::byte* from) {
  Sample sample;
  std::memcpy(&sample, from, sizeof sample);
  return sample;
}

template <typename Sample>
std::int16_t asInt16(Sample sample) {
  if constexpr (std::is_same_v<Sample, std::int16_t>) {
    return sample;
  } else if constexpr (std::is_same_v<Sample, std::int32_t>) {
    const std::int64_t rounded = (std::int64_t{sample} + 0x8000) >> 16;
    return static_cast<std::int16_t>(std::min<std::int64_t>(rounded, 32767));
  } else {
    if (std::isnan(sample)) {
      return 0;
    }
    const Sample scaled = std::clamp(sample * Sample{32768}, Sample{-32768}, Sample{32767});
    return static_cast<std::int16_t>(std::lrint(scaled));
  }
}

template <typename Sample>
float asFloat(Sample sample) {
  if constexpr (std::is_same_v<Sample, std::int16_t>) {
    return static_cast<float>(sample) / 32768.0F;
  } else if constexpr (std::is_same_v<Sample, std::int32_t>) {
    return static_cast<float>(sample) / 2147483648.0F;
  } else {
    if (std::isnan(sample)) {
      return 0;
    }
    constexpr auto limit = static_cast<Sample>(floatLimit);
    return static_cast<float>(std::clamp(sample, -limit, limit));
  }
}

template <typename Sample>
void channelToInt16(const std::byte* from, std::size_t stride, std::size_t frames,
                    std::int16_t* out, std::size_t outStride) {
  for (std::size_t i = 0; i < frames; ++i) {
    out[i * outStride] = asInt16(load<Sample>(from + i * stride));
  }
}

template <typename Sample>
void channelToFloat(const std::byte* from, std::size_t stride, std::size_t frames, float* out) {
  for (std::size_t i = 0; i < frames; ++i) {
    out[i] = asFloat(load<Sample>(from + i * stride));
  }
}

}  // namespace

SampleConverter::SampleConverter(AV::AudioCommonFormat format, bool interleaved,
                                 std::size_t channels)
    : interleaved_(interleaved), channels_(channels), sampleSize_(sampleSize(format)) {
  using enum AV::AudioCommonFormat;
  switch (format) {
    case pcmFormatFloat32:
      toInt16_ = channelToInt16<float>;
      toFloat_ = channelToFloat<float>;
      break;
    case pcmFormatFloat64:
      toInt16_ = channelToInt16<double>;
      toFloat_ = channelToFloat<double>;
      break;
    case pcmFormatInt16:
      toInt16_ = channelToInt16<std::int16_t>;
      toFloat_ = channelToFloat<std::int16_t>;
      break;
    case pcmFormatInt32:
      toInt16_ = channelToInt16<std::int32_t>;
      toFloat_ = channelToFloat<std::int32_t>;
      break;
    case otherFormat:
      break;
  }
}

bool SampleConverter::holdsFrames(const CA::AudioBufferList& buffers, std::size_t frames) const {
  const std::size_t bufferCount = interleaved_ ? 1 : channels_;
  const std::size_t bytes = frames * sampleSize_ * (interleaved_ ? channels_ : 1);
  if (buffers.mNumberBuffers != bufferCount) {
    return false;
  }
  return std::all_of(buffers.mBuffers, buffers.mBuffers + bufferCount,
                     [bytes](const CA::AudioBuffer& buffer) {
                       return buffer.mData != nullptr && buffer.mDataByteSize >= bytes;
                     });
}

const std::byte* SampleConverter::sampleAt(const CA::AudioBufferList& buffers, std::size_t channel,
                                           std::size_t frame) const {
  const CA::AudioBuffer& buffer = buffers.mBuffers[interleaved_ ? 0 : channel];
  const std::size_t sample = interleaved_ ? frame * channels_ + channel : frame;
  return static_cast<const std::byte*>(buffer.mData) + sample * sampleSize_;
}

void SampleConverter::toInt16(const CA::AudioBufferList& buffers, std::size_t first,
                              std::size_t frames, std::int16_t* out) const {
  if (interleaved_) {
    toInt16_(sampleAt(buffers, 0, first), sampleSize_, frames * channels_, out, 1);
    return;
  }
  for (std::size_t channel = 0; channel < channels_; ++channel) {
    toInt16_(sampleAt(buffers, channel, first), sampleSize_, frames, out + channel, channels_);
  }
}

void SampleConverter::toPlanarFloat(const CA::AudioBufferList& buffers, std::size_t first,
                                    std::size_t frames, std::span<float* const> planes,
                                    std::size_t offset) const {
  const std::size_t stride = interleaved_ ? sampleSize_ * channels_ : sampleSize_;
  for (std::size_t channel = 0; channel < channels_; ++channel) {
    toFloat_(sampleAt(buffers, channel, first), stride, frames, planes[channel] + offset);
  }
}

}  // namespace audrel::linuxos
