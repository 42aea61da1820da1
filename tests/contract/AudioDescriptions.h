#pragma once

#include <cstdint>

#include "platform/CoreAudio.h"

/// Descriptions of linear PCM for the contracts of audio.
namespace audrel::contract {

enum class Samples { floats, integers };
enum class Channels { interleaved, separate };

/// Packed, in this machine's byte order, at 48 kHz.
inline CA::AudioStreamBasicDescription pcm(Samples samples, std::uint32_t bits,
                                           std::uint32_t channels,
                                           Channels layout = Channels::interleaved) {
  const bool isInterleaved = layout == Channels::interleaved;
  CA::AudioStreamBasicDescription description;
  description.mSampleRate = 48000;
  description.mFormatID = CA::kAudioFormatLinearPCM;
  description.mFormatFlags = CA::kAudioFormatFlagIsPacked |
                             (samples == Samples::floats ? CA::kAudioFormatFlagIsFloat
                                                         : CA::kAudioFormatFlagIsSignedInteger) |
                             (isInterleaved ? 0 : CA::kAudioFormatFlagIsNonInterleaved);
  description.mBytesPerFrame = bits / 8 * (isInterleaved ? channels : 1);
  description.mBytesPerPacket = description.mBytesPerFrame;
  description.mFramesPerPacket = 1;
  description.mChannelsPerFrame = channels;
  description.mBitsPerChannel = bits;
  return description;
}

/// What a tap delivers.
inline CA::AudioStreamBasicDescription floatStereo(Channels layout = Channels::interleaved) {
  return pcm(Samples::floats, 32, 2, layout);
}

}  // namespace audrel::contract
