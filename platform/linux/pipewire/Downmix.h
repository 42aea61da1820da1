#pragma once

#include <array>
#include <cstdint>

namespace audrel::linuxos {

/// The channels that a tap takes in: a front pair, and what surround streams have besides.
inline constexpr std::uint32_t tapChannels = 8;

/// In the order of the stream's positions: FL FR FC LFE RL RR SL SR.
using ChannelPlanes = std::array<const float*, tapChannels>;

/// Interleaves the front pair into `stereo` (2 * `frames` samples).
void interleaveFrontPair(const ChannelPlanes& planes, float* stereo, std::uint32_t frames) noexcept;

/// Interleaves the front pair with the other channels mixed in at the usual gains: centre, rear
/// and side at -3 dB, low frequencies at -9 dB on both.
void mixDown(const ChannelPlanes& planes, float* stereo, std::uint32_t frames) noexcept;

/// What a tap took in.
struct TapAudio {
  ChannelPlanes planes{};
  std::uint32_t frames = 0;
  bool hasSurround = false;  ///< whether anything but the front pair is in it
};

/// The frames from `first` on, in stereo.
void readStereo(const TapAudio& audio, std::uint32_t first, std::uint32_t frames,
                float* stereo) noexcept;

}  // namespace audrel::linuxos
