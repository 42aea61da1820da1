#include "tests/platform/linux/pipewire/harness/ToneReading.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace audrel::pwtest {

namespace {

constexpr double pieceSeconds = 0.05;

/// Amplitude and phase of the frequency in each piece.
std::vector<std::complex<double>> pieces(const Audio& audio, Channel channel, std::size_t begin,
                                         double rate, double frequency) {
  const auto length = static_cast<std::size_t>(rate * pieceSeconds);
  std::vector<std::complex<double>> result;
  for (std::size_t start = begin; start + length <= framesOf(audio); start += length) {
    std::complex<double> sum = 0;
    for (std::size_t frame = start; frame < start + length; ++frame) {
      const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(frame) / rate;
      sum += static_cast<double>(audio[2 * frame + static_cast<std::size_t>(channel)]) *
             std::polar(1.0, -angle);
    }
    result.push_back(sum * 2.0 / static_cast<double>(length));
  }
  return result;
}

/// Phases in cycles, each within half a cycle of the one before.
std::vector<double> unwrappedPhases(const std::vector<std::complex<double>>& pieces) {
  std::vector<double> phases;
  double last = 0;
  for (const auto& piece : pieces) {
    const double phase = std::arg(piece) / (2 * std::numbers::pi);
    last += std::remainder(phase - last, 1.0);
    phases.push_back(last);
  }
  return phases;
}

}  // namespace

ToneReading readTone(const Audio& audio, Channel channel, std::size_t begin, double rate,
                     double frequency) {
  ToneReading reading;
  const auto all = pieces(audio, channel, begin, rate, frequency);
  if (all.size() < 2) {
    return reading;
  }
  const auto [lowest, highest] =
      std::ranges::minmax(all, {}, [](const auto& piece) { return std::abs(piece); });
  reading.lowestLevel = std::abs(lowest);
  reading.highestLevel = std::abs(highest);
  const auto phases = unwrappedPhases(all);
  const double slope = (phases.back() - phases.front()) / static_cast<double>(phases.size() - 1);
  reading.frequency = frequency + slope / pieceSeconds;
  for (std::size_t i = 0; i < phases.size(); ++i) {
    const double straight = phases.front() + slope * static_cast<double>(i);
    reading.phaseError = std::max(reading.phaseError, std::abs(phases[i] - straight));
  }
  return reading;
}

std::size_t firstSound(const Audio& audio) {
  std::size_t frame = 0;
  while (frame < framesOf(audio) && audio[2 * frame] == 0 && audio[2 * frame + 1] == 0) {
    ++frame;
  }
  return frame;
}

}  // namespace audrel::pwtest
