#include "platform/linux/aac/AacEncoder.h"

#include <algorithm>
#include <array>

#include "platform/linux/aac/AacModule.h"

namespace audrel::linuxos {

std::unique_ptr<AacEncoder> AacEncoder::open(const Settings& settings, std::string* problem) {
  const AudrelAacFunctions* functions = aacFunctions(problem);
  if (functions == nullptr) {
    return nullptr;
  }
  std::array<char, 512> text{};
  AudrelAacEncoder* encoder = functions->open(settings.sampleRate, settings.channels,
                                              settings.bitRate, text.data(), text.size());
  if (encoder == nullptr) {
    *problem = text.data();
    return nullptr;
  }
  return std::unique_ptr<AacEncoder>(new AacEncoder(*functions, encoder));
}

std::vector<std::byte> AacEncoder::silentPacket(const Settings& settings) {
  std::string problem;
  const auto encoder = open(settings, &problem);
  std::vector<std::byte> packet;
  for (int i = 0; encoder && i < 4; ++i) {  // the first packets carry the encoder's start
    float** planes = encoder->input();
    if (planes == nullptr) {
      return {};
    }
    for (std::uint32_t channel = 0; channel < settings.channels; ++channel) {
      std::fill_n(planes[channel], encoder->framesPerPacket(), 0.0F);
    }
    if (encoder->send(encoder->framesPerPacket()) != 0) {
      return {};
    }
    int code = 0;
    while (const auto bytes = encoder->nextPacket(&code)) {
      packet.assign(bytes->begin(), bytes->end());
    }
  }
  return packet;
}

std::size_t AacEncoder::framesPerPacket() const {
  return functions_.framesPerPacket(encoder_.get());
}

std::size_t AacEncoder::initialPadding() const {
  return functions_.initialPadding(encoder_.get());
}

std::int64_t AacEncoder::bitRate() const {
  return functions_.bitRate(encoder_.get());
}

std::span<const std::byte> AacEncoder::configuration() const {
  std::size_t size = 0;
  const std::uint8_t* bytes = functions_.configuration(encoder_.get(), &size);
  return std::as_bytes(std::span(bytes, size));
}

float** AacEncoder::input() {
  return functions_.input(encoder_.get());
}

int AacEncoder::send(std::size_t frames) {
  return functions_.send(encoder_.get(), frames);
}

int AacEncoder::sendEnd() {
  return functions_.sendEnd(encoder_.get());
}

std::optional<std::span<const std::byte>> AacEncoder::nextPacket(int* code) {
  std::size_t size = 0;
  *code = 0;
  const std::uint8_t* bytes = functions_.nextPacket(encoder_.get(), &size, code);
  return bytes == nullptr ? std::nullopt : std::optional(std::as_bytes(std::span(bytes, size)));
}

}  // namespace audrel::linuxos
