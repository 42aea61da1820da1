#pragma once

#include <cstddef>
#include <cstdint>

/// What the program and the module that encodes AAC agree on. Plain C, without exceptions: after an
/// upgrade underneath a running program the two are of different builds.
extern "C" {

/// One thread at a time. Where an encoder is expected, null is none.
struct AudrelAacEncoder;

struct AudrelAacFunctions {
  /// `audrelAacInterface` of the build. It stays the first.
  std::uint32_t interfaceNumber;

  /// Null, and why in `problem`: one sentence or two, ended by a zero, cut to `problemSize` bytes.
  AudrelAacEncoder* (*open)(std::uint32_t sampleRate, std::uint32_t channels, std::int64_t bitRate,
                            char* problem, std::size_t problemSize);
  void (*close)(AudrelAacEncoder* encoder);

  std::size_t (*framesPerPacket)(const AudrelAacEncoder* encoder);
  std::size_t (*initialPadding)(const AudrelAacEncoder* encoder);
  std::int64_t (*bitRate)(const AudrelAacEncoder* encoder);

  /// Valid until `close`.
  const std::uint8_t* (*configuration)(const AudrelAacEncoder* encoder, std::size_t* size);

  float** (*input)(AudrelAacEncoder* encoder);
  int (*send)(AudrelAacEncoder* encoder, std::size_t frames);
  int (*sendEnd)(AudrelAacEncoder* encoder);

  /// Null when none is ready; then `code` says why.
  const std::uint8_t* (*nextPacket)(AudrelAacEncoder* encoder, std::size_t* size, int* code);
};

/// Of the declarations above: one more with every change of them.
constexpr std::uint32_t audrelAacInterface = 1;

/// The module's entry, by its name below.
using AudrelAacEntry = const AudrelAacFunctions* (*)();
constexpr const char* audrelAacEntryName = "audrelAacFunctions";

}  // extern "C"
