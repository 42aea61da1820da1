// What the AAC encoder alone costs.
//
//   encoder_baseline              opens the encoder, prints "ready", and waits for its input's end
//   encoder_baseline FRAMES FILE  encodes a file's last FRAMES stereo frames of 16 bits at 48 kHz
//                                 and drops the result

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/aac/AacEncoder.h"

namespace audrel::bench {
namespace {

using linuxos::AacEncoder;

constexpr std::uint32_t channels = 2;
constexpr AacEncoder::Settings settings = {
    .sampleRate = 48000, .channels = channels, .bitRate = 256000};

using Frame = std::array<std::int16_t, channels>;

bool takePackets(AacEncoder& encoder) {
  int code = 0;
  while (encoder.nextPacket(&code)) {
  }
  return code == 0;
}

bool encodeNext(AacEncoder& encoder, const Frame* frames, std::size_t count) {
  float** planes = encoder.input();
  if (planes == nullptr) {
    return false;
  }
  for (std::size_t frame = 0; frame < count; ++frame) {
    for (std::size_t channel = 0; channel < channels; ++channel) {
      planes[channel][frame] = static_cast<float>(frames[frame].at(channel)) / 32768.0F;
    }
  }
  return encoder.send(count) == 0 && takePackets(encoder);
}

bool encode(AacEncoder& encoder, std::size_t frames, const char* path) {
  std::ifstream file(path, std::ios::binary);
  file.seekg(-static_cast<std::streamoff>(frames * sizeof(Frame)), std::ios::end);
  std::vector<Frame> packet(encoder.framesPerPacket());
  for (std::size_t left = frames; left > 0;) {
    const std::size_t count = std::min(left, packet.size());
    file.read(reinterpret_cast<char*>(packet.data()),
              static_cast<std::streamsize>(count * sizeof(Frame)));
    if (!file || !encodeNext(encoder, packet.data(), count)) {
      return false;
    }
    left -= count;
  }
  return encoder.sendEnd() == 0 && takePackets(encoder);
}

int run(int count, char** arguments) {
  std::string problem;
  const auto encoder = AacEncoder::open(settings, &problem);
  if (!encoder) {
    std::cerr << "encoder_baseline: " << problem << "\n";
    return EXIT_FAILURE;
  }
  if (count == 3) {
    if (!encode(*encoder, std::strtoull(arguments[1], nullptr, 10), arguments[2])) {
      std::cerr << "encoder_baseline: " << arguments[2] << " could not be encoded\n";
      return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
  }
  std::cout << "ready\n" << std::flush;
  std::string line;
  std::getline(std::cin, line);
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace audrel::bench

int main(int count, char** arguments) {
  return audrel::bench::run(count, arguments);
}
