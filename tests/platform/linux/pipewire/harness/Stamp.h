#pragma once

#include <cstdint>
#include <optional>

/// Audio of which every frame tells where it comes from: noise in which a stereo frame is the
/// number of its stream and its position in that stream, scrambled.
namespace audrel::pwtest {

/// A sample in 16-bit steps, within ±16384: the sum of two streams is still exact in 16 bits.
struct StampedFrame {
  std::int16_t left = 0;
  std::int16_t right = 0;

  bool operator==(const StampedFrame&) const = default;
};

struct StampPosition {
  std::uint32_t stream = 0;    ///< below `stampStreams`
  std::uint64_t position = 0;  ///< in frames; repeats after `stampFrames`

  bool operator==(const StampPosition&) const = default;
};

inline constexpr std::uint32_t stampStreams = 32;
inline constexpr std::uint64_t stampFrames = 1U << 25U;  // 11 minutes at 48 kHz

StampedFrame stamp(StampPosition at);

/// The inverse of `stamp`: every possible frame has one.
StampPosition unstamp(StampedFrame frame);

/// The sample of one channel of a stream with more than two: each further pair of channels is the
/// stereo stream of the next number.
std::int16_t stampedSample(StampPosition at, std::uint32_t channel);

/// A 16-bit sample as PipeWire converts it.
constexpr float asFloat(std::int16_t sample) {
  return static_cast<float>(sample) / 32768.0F;
}

/// The stamped frame that two float samples are, if they are one exactly.
std::optional<StampedFrame> asStampedFrame(float left, float right);

}  // namespace audrel::pwtest
