#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/aac/AacFunctions.h"

namespace audrel::linuxos {

/// libavcodec's AAC-LC encoder, in the module that is loaded for the first of them. One thread at a
/// time; it logs nothing.
class AacEncoder {
 public:
  struct Settings {
    std::uint32_t sampleRate = 0;
    std::uint32_t channels = 0;
    std::int64_t bitRate = 0;  ///< bits per second; the nearest that AAC has for rate and channels
  };

  /// Null and a sentence in `problem` when AAC has no such rate or number of channels, or when the
  /// module cannot be used.
  static std::unique_ptr<AacEncoder> open(const Settings& settings, std::string* problem);

  /// A packet that decodes to silence, from an encoder of its own; empty when there is no memory.
  static std::vector<std::byte> silentPacket(const Settings& settings);

  /// Frames that a packet decodes to.
  std::size_t framesPerPacket() const;

  /// Frames by which the decoded audio comes later than what was put in.
  std::size_t initialPadding() const;

  std::int64_t bitRate() const;

  /// The AudioSpecificConfig that a decoder needs.
  std::span<const std::byte> configuration() const;

  /// Where the next `framesPerPacket()` frames go, a plane for each channel, full scale 1. Null
  /// when there is no memory. Valid until `send`.
  float** input();

  /// Encodes the first `frames` frames of `input()`; fewer than `framesPerPacket()` only as the
  /// last. 0 or an `errno` value. `nextPacket` is then to be called until it gives nothing.
  int send(std::size_t frames);

  /// Nothing comes any more: makes the encoder give what it holds back. 0 or an `errno` value.
  int sendEnd();

  /// The next packet that is ready, valid until the next call. When there is none, `code` is 0, or
  /// an `errno` value if encoding failed.
  std::optional<std::span<const std::byte>> nextPacket(int* code);

 private:
  struct Close {
    const AudrelAacFunctions* functions = nullptr;
    void operator()(AudrelAacEncoder* encoder) const { functions->close(encoder); }
  };

  AacEncoder(const AudrelAacFunctions& functions, AudrelAacEncoder* encoder)
      : functions_(functions), encoder_(encoder, Close{&functions}) {}

  const AudrelAacFunctions& functions_;
  std::unique_ptr<AudrelAacEncoder, Close> encoder_;
};

}  // namespace audrel::linuxos
