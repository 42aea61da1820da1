#include "tests/platform/linux/pipewire/harness/Stamp.h"

#include <cmath>

namespace audrel::pwtest {

namespace {

constexpr std::uint32_t halfBits = 15;
constexpr std::uint32_t halfMask = (1U << halfBits) - 1;
constexpr int middle = 1 << (halfBits - 1);
constexpr std::uint32_t positionBits = 25;
constexpr std::uint32_t rounds = 6;

/// Any function will do for a Feistel network, which can be run backwards whatever it is.
std::uint32_t roundFunction(std::uint32_t half, std::uint32_t round) {
  std::uint32_t mixed = (half + 1) * 0x9E3779B1U + round * 0x85EBCA77U;
  mixed ^= mixed >> 15U;
  mixed *= 0xC2B2AE3DU;
  return (mixed >> 13U) & halfMask;
}

std::int16_t toSample(std::uint32_t half) {
  return static_cast<std::int16_t>(static_cast<int>(half) - middle);
}

std::uint32_t toHalf(std::int16_t sample) {
  return static_cast<std::uint32_t>(sample + middle) & halfMask;
}

}  // namespace

StampedFrame stamp(StampPosition at) {
  const std::uint32_t number =
      at.stream << positionBits | static_cast<std::uint32_t>(at.position % stampFrames);
  std::uint32_t left = number >> halfBits;
  std::uint32_t right = number & halfMask;
  for (std::uint32_t round = 0; round < rounds; ++round) {
    const std::uint32_t next = left ^ roundFunction(right, round);
    left = right;
    right = next;
  }
  return {toSample(left), toSample(right)};
}

StampPosition unstamp(StampedFrame frame) {
  std::uint32_t left = toHalf(frame.left);
  std::uint32_t right = toHalf(frame.right);
  for (std::uint32_t round = rounds; round-- > 0;) {
    const std::uint32_t previous = right ^ roundFunction(left, round);
    right = left;
    left = previous;
  }
  const std::uint32_t number = left << halfBits | right;
  return {.stream = number >> positionBits,
          .position = number & (static_cast<std::uint32_t>(stampFrames) - 1)};
}

std::int16_t stampedSample(StampPosition at, std::uint32_t channel) {
  const StampedFrame frame = stamp({at.stream + channel / 2, at.position});
  return channel % 2 == 0 ? frame.left : frame.right;
}

std::optional<StampedFrame> asStampedFrame(float left, float right) {
  const float scaledLeft = left * 32768.0F;
  const float scaledRight = right * 32768.0F;
  const auto fits = [](float sample) {
    return sample == std::trunc(sample) && sample >= -middle && sample < middle;
  };
  if (!fits(scaledLeft) || !fits(scaledRight)) {
    return std::nullopt;
  }
  return StampedFrame{static_cast<std::int16_t>(scaledLeft),
                      static_cast<std::int16_t>(scaledRight)};
}

}  // namespace audrel::pwtest
