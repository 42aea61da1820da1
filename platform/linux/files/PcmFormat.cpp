#include "platform/linux/files/PcmFormat.h"

#include <bit>
#include <cmath>

namespace audrel::linuxos {
namespace {

constexpr std::uint32_t flagIsBigEndian = 1U << 1U;
constexpr std::uint32_t flagIsAlignedHigh = 1U << 4U;
constexpr std::uint32_t fractionBitsMask = 0x3FU << 7U;  // fixed point: bits after the point

constexpr std::uint32_t nativeEndianFlag =
    std::endian::native == std::endian::big ? flagIsBigEndian : 0;

bool hasFlag(const CA::AudioStreamBasicDescription& description, std::uint32_t flag) {
  return (description.mFormatFlags & flag) != 0;
}

std::uint32_t channelsPerBuffer(const CA::AudioStreamBasicDescription& description) {
  return hasFlag(description, CA::kAudioFormatFlagIsNonInterleaved) ? 1
                                                                    : description.mChannelsPerFrame;
}

bool describesPcm(const CA::AudioStreamBasicDescription& description) {
  if (description.mFormatID != CA::kAudioFormatLinearPCM ||
      !std::isfinite(description.mSampleRate) || description.mSampleRate <= 0 ||
      description.mChannelsPerFrame == 0 || description.mFramesPerPacket != 1 ||
      description.mBytesPerFrame == 0 || description.mBitsPerChannel == 0 ||
      description.mBytesPerPacket != description.mBytesPerFrame ||
      description.mBytesPerFrame % channelsPerBuffer(description) != 0) {
    return false;
  }
  const std::uint64_t room =
      std::uint64_t{8} * (description.mBytesPerFrame / channelsPerBuffer(description));
  if (description.mBitsPerChannel > room ||
      (hasFlag(description, CA::kAudioFormatFlagIsPacked) && description.mBitsPerChannel != room)) {
    return false;
  }
  if (hasFlag(description, CA::kAudioFormatFlagIsFloat)) {
    return !hasFlag(description, CA::kAudioFormatFlagIsSignedInteger) &&
           (description.mBitsPerChannel == 32 || description.mBitsPerChannel == 64);
  }
  return true;
}

AV::AudioCommonFormat commonFormatOf(const CA::AudioStreamBasicDescription& description) {
  using enum AV::AudioCommonFormat;
  const std::uint32_t bits = description.mBitsPerChannel;
  const std::uint32_t layout =
      description.mFormatFlags & (flagIsBigEndian | flagIsAlignedHigh | fractionBitsMask);
  if (layout != nativeEndianFlag ||
      description.mBytesPerFrame / channelsPerBuffer(description) * 8 != bits) {
    return otherFormat;
  }
  if (hasFlag(description, CA::kAudioFormatFlagIsFloat)) {
    return bits == 32 ? pcmFormatFloat32 : pcmFormatFloat64;
  }
  if (hasFlag(description, CA::kAudioFormatFlagIsSignedInteger)) {
    if (bits == 16) {
      return pcmFormatInt16;
    }
    if (bits == 32) {
      return pcmFormatInt32;
    }
  }
  return otherFormat;
}

}  // namespace

std::shared_ptr<const PcmFormat> PcmFormat::make(
    const CA::AudioStreamBasicDescription& description) {
  if (!describesPcm(description)) {
    return nullptr;
  }
  return std::shared_ptr<const PcmFormat>(new PcmFormat(description));
}

PcmFormat::PcmFormat(const CA::AudioStreamBasicDescription& description)
    : description_(description), commonFormat_(commonFormatOf(description)) {}

bool PcmFormat::isInterleaved() const {
  return !hasFlag(description_, CA::kAudioFormatFlagIsNonInterleaved);
}

std::size_t sampleSize(AV::AudioCommonFormat format) {
  using enum AV::AudioCommonFormat;
  switch (format) {
    case pcmFormatInt16:
      return 2;
    case pcmFormatFloat32:
    case pcmFormatInt32:
      return 4;
    case pcmFormatFloat64:
      return 8;
    case otherFormat:
      break;
  }
  return 0;
}

}  // namespace audrel::linuxos
