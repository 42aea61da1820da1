#include "platform/linux/demo/Melody.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace audrel::linuxos {

namespace {

/// Equal temperament, in Hz: A4, C#5, E5, A5, F#5, E5, C#5, B4.
constexpr std::array notes = {440.00, 554.37, 659.26, 880.00, 739.99, 659.26, 554.37, 493.88};
constexpr double noteSeconds = 0.25;
constexpr double attackSeconds = 0.005;
constexpr double decayPerSecond = 6;
constexpr double amplitude = 0.4;
constexpr double octaveShare = 0.2;

}  // namespace

void Melody::render(float* stereo, std::uint32_t frames) {
  const auto noteFrames = static_cast<std::uint64_t>(noteSeconds * rate_);
  for (std::uint32_t i = 0; i < frames; ++i, ++position_) {
    const std::size_t note = position_ / noteFrames % notes.size();
    const double time = static_cast<double>(position_ % noteFrames) / rate_;
    const double attack = std::fmin(time / attackSeconds, 1.0);
    const double envelope = attack * std::exp(-decayPerSecond * time);
    const double phase = 2 * std::numbers::pi * notes[note] * time;
    const double value =
        envelope * ((1 - octaveShare) * std::sin(phase) + octaveShare * std::sin(2 * phase));
    // Low notes stand a little to the left, high ones to the right.
    const double pan = 0.35 + 0.3 * static_cast<double>(note) / notes.size();
    stereo[std::size_t{2} * i] = static_cast<float>(amplitude * value * 2 * (1 - pan) / 1.3);
    stereo[std::size_t{2} * i + 1] = static_cast<float>(amplitude * value * 2 * pan / 1.3);
  }
}

}  // namespace audrel::linuxos
