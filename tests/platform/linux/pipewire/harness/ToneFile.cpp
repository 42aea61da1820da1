#include "tests/platform/linux/pipewire/harness/ToneFile.h"

#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>

namespace audrel::pwtest {

namespace {

constexpr std::uint32_t rate = 48000;
constexpr std::uint16_t channels = 2;
constexpr std::uint16_t bytesPerSample = 2;
constexpr std::uint32_t bytesPerFrame = channels * bytesPerSample;

template <typename Number>
void put(std::ofstream& file, Number number) {
  file.write(reinterpret_cast<const char*>(&number), sizeof number);
}

void putHeader(std::ofstream& file, std::uint32_t frames) {
  constexpr std::uint16_t pcm = 1;
  file << "RIFF";
  put(file, frames * bytesPerFrame + 36);
  file << "WAVEfmt ";
  put(file, std::uint32_t{16});
  put(file, pcm);
  put(file, channels);
  put(file, rate);
  put(file, rate * bytesPerFrame);
  put(file, static_cast<std::uint16_t>(bytesPerFrame));
  put(file, static_cast<std::uint16_t>(8 * bytesPerSample));
  file << "data";
  put(file, frames * bytesPerFrame);
}

}  // namespace

void writeTone(const std::string& path, double frequency, double amplitude,
               std::chrono::milliseconds length) {
  const auto frames = static_cast<std::uint32_t>(length.count() * rate / 1000);
  std::ofstream file(path, std::ios::binary);
  putHeader(file, frames);
  for (std::uint32_t frame = 0; frame < frames; ++frame) {
    const double angle = 2 * std::numbers::pi * frequency * frame / rate;
    const auto sample = static_cast<std::int16_t>(std::lround(32767 * amplitude * std::sin(angle)));
    put(file, sample);
    put(file, sample);
  }
}

}  // namespace audrel::pwtest
