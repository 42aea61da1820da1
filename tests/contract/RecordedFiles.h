#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// What a test has to know of a recording, read from the bytes of its file. Throws a
/// `std::runtime_error` for what is no complete file of its kind.
namespace audrel::contract {

/// 16-bit PCM. Every size in the file was found to be that of the file.
struct WavFile {
  std::uint16_t channels = 0;
  std::uint32_t sampleRate = 0;
  std::vector<std::int16_t> samples;  ///< interleaved
};

WavFile readWav(const std::filesystem::path& path);

/// Its boxes follow each other to the file's end, with those that make it complete.
struct M4aFile {
  double seconds = 0;                ///< as the movie's header has it
  std::uint64_t bytesOfPackets = 0;  ///< of the encoded audio
};

M4aFile readM4a(const std::filesystem::path& path);

}  // namespace audrel::contract
