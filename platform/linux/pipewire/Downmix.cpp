#include "platform/linux/pipewire/Downmix.h"

#include <numbers>

namespace audrel::linuxos {

namespace {

constexpr float minus3dB = std::numbers::sqrt2_v<float> / 2;
constexpr float minus9dB = minus3dB / 2;

enum Channel : std::uint32_t { FL, FR, FC, LFE, RL, RR, SL, SR };

}  // namespace

void interleaveFrontPair(const ChannelPlanes& planes, float* stereo,
                         std::uint32_t frames) noexcept {
  const float* left = planes[FL];
  const float* right = planes[FR];
  for (std::uint32_t i = 0; i < frames; ++i) {
    stereo[2 * i] = left[i];
    stereo[2 * i + 1] = right[i];
  }
}

void mixDown(const ChannelPlanes& planes, float* stereo, std::uint32_t frames) noexcept {
  for (std::uint32_t i = 0; i < frames; ++i) {
    const float both = minus3dB * planes[FC][i] + minus9dB * planes[LFE][i];
    stereo[2 * i] = planes[FL][i] + both + minus3dB * (planes[RL][i] + planes[SL][i]);
    stereo[2 * i + 1] = planes[FR][i] + both + minus3dB * (planes[RR][i] + planes[SR][i]);
  }
}

void readStereo(const TapAudio& audio, std::uint32_t first, std::uint32_t frames,
                float* stereo) noexcept {
  ChannelPlanes planes = audio.planes;
  for (const float*& plane : planes) {
    plane = plane == nullptr ? nullptr : plane + first;
  }
  if (audio.hasSurround) {
    mixDown(planes, stereo, frames);
  } else {
    interleaveFrontPair(planes, stereo, frames);
  }
}

}  // namespace audrel::linuxos
