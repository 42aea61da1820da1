#include "platform/linux/files/FileSettings.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>
#include <string>

#include "platform/linux/files/FileErrors.h"

namespace audrel::linuxos {
namespace {

constexpr std::int64_t defaultBitRate = 128'000;

/// A value as a number, whichever type it was set with; `fallback` when it is absent.
double number(const AV::Settings& settings, const char* key, double fallback) {
  const auto found = settings.find(key);
  if (found == settings.end()) {
    return fallback;
  }
  return std::visit([](auto value) { return static_cast<double>(value); }, found->second);
}

/// `value` if it is a whole number from 1 to the type's largest.
std::optional<std::uint32_t> positiveInteger(double value) {
  if (!(value >= 1) || value > std::numeric_limits<std::uint32_t>::max() ||
      value != std::floor(value)) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(value);
}

bool isSixteenBitLittleEndianInteger(const AV::Settings& settings) {
  return number(settings, AV::AVLinearPCMBitDepthKey, 16) == 16 &&
         number(settings, AV::AVLinearPCMIsBigEndianKey, 0) == 0 &&
         number(settings, AV::AVLinearPCMIsFloatKey, 0) == 0 &&
         number(settings, AV::AVLinearPCMIsNonInterleaved, 0) == 0;
}

std::optional<std::string> problemWith(const AV::Settings& settings) {
  const double format = number(settings, AV::AVFormatIDKey, 0);
  if (format != CA::kAudioFormatMPEG4AAC && format != CA::kAudioFormatLinearPCM) {
    return "Recordings are written as M4A (AAC) or WAV. Choose one of them.";
  }
  if (!positiveInteger(number(settings, AV::AVSampleRateKey, 0))) {
    return "Recordings need a sample rate of a whole number of hertz. Set the audio device to one.";
  }
  if (!positiveInteger(number(settings, AV::AVNumberOfChannelsKey, 0))) {
    return "Recordings need at least one channel.";
  }
  if (format == CA::kAudioFormatLinearPCM && !isSixteenBitLittleEndianInteger(settings)) {
    return "WAV recordings are written as 16-bit little-endian integers only.";
  }
  return std::nullopt;
}

}  // namespace

std::optional<FileSettings> readSettings(const AV::Settings& settings, NS::Error* error) {
  if (const auto problem = problemWith(settings)) {
    *error = plainError(EINVAL, *problem);
    return std::nullopt;
  }
  FileSettings read;
  read.container = number(settings, AV::AVFormatIDKey, 0) == CA::kAudioFormatMPEG4AAC
                       ? FileSettings::Container::m4a
                       : FileSettings::Container::wav;
  read.sampleRate = *positiveInteger(number(settings, AV::AVSampleRateKey, 0));
  read.channels = *positiveInteger(number(settings, AV::AVNumberOfChannelsKey, 0));
  read.bitRate = static_cast<std::int64_t>(
      std::clamp(number(settings, AV::AVEncoderBitRateKey, defaultBitRate), 0.0, 1e9));
  return read;
}

}  // namespace audrel::linuxos
