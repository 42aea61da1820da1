#include "platform/linux/pipewire/Downmix.h"

#include <gtest/gtest.h>

#include <array>

namespace audrel::linuxos {
namespace {

/// One frame with 1 in one channel and 0 in the others, mixed down.
std::array<float, 2> mixOf(std::size_t channel) {
  std::array<float, tapChannels> samples{};
  samples[channel] = 1;
  ChannelPlanes planes{};
  for (std::size_t i = 0; i < planes.size(); ++i) {
    planes[i] = &samples[i];
  }
  std::array<float, 2> stereo{};
  mixDown(planes, stereo.data(), 1);
  return stereo;
}

void expectMix(std::size_t channel, float left, float right) {
  EXPECT_NEAR(mixOf(channel)[0], left, 0.001F) << "channel " << channel;
  EXPECT_NEAR(mixOf(channel)[1], right, 0.001F) << "channel " << channel;
}

TEST(Downmix, takesEachChannelAtItsUsualGain) {
  expectMix(0, 1, 0);
  expectMix(1, 0, 1);
  expectMix(2, 0.7071F, 0.7071F);
  expectMix(3, 0.3536F, 0.3536F);
  expectMix(4, 0.7071F, 0);
  expectMix(5, 0, 0.7071F);
  expectMix(6, 0.7071F, 0);
  expectMix(7, 0, 0.7071F);
}

TEST(Downmix, theFrontPairAloneIsKeptBitByBit) {
  const std::array<float, 3> left = {0.1F, -0.3F, 1.5F};
  const std::array<float, 3> right = {-0.7F, 0.9F, -2.0F};
  ChannelPlanes planes{};
  planes[0] = left.data();
  planes[1] = right.data();
  std::array<float, 6> stereo{};
  interleaveFrontPair(planes, stereo.data(), 3);
  EXPECT_EQ(stereo, (std::array<float, 6>{0.1F, -0.7F, -0.3F, 0.9F, 1.5F, -2.0F}));
}

}  // namespace
}  // namespace audrel::linuxos
