#pragma once

#include <cstdint>
#include <optional>

#include "platform/AVFAudio.h"

namespace audrel::linuxos {

/// What kind of file is asked for.
struct FileSettings {
  enum class Container {
    m4a,  ///< AAC-LC
    wav,  ///< 16-bit little-endian integers
  };

  Container container = Container::wav;
  std::uint32_t sampleRate = 0;  ///< frames per second
  std::uint32_t channels = 0;
  std::int64_t bitRate = 0;  ///< of `m4a`, bits per second

  bool operator==(const FileSettings&) const = default;
};

/// Reads a settings dictionary. Nothing, and `error` set, when it asks for what these files can't
/// hold. The encoder's quality key has no effect: the bit rate decides.
std::optional<FileSettings> readSettings(const AV::Settings& settings, NS::Error* error);

}  // namespace audrel::linuxos
