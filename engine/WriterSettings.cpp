#include "engine/WriterSettings.h"

#include <cstdint>

namespace audrel {
namespace {

constexpr std::int64_t encoderBitRate = 256'000;  // bits per second
constexpr std::int64_t pcmBitDepth = 16;

}  // namespace

AV::Settings writerSettings(RecordingFormat format, const AV::AudioFormat& input) {
  const double sampleRate = input.sampleRate();
  const std::int64_t channels{input.channelCount()};

  if (format == RecordingFormat::wav) {
    return {
        {AV::AVFormatIDKey, CA::kAudioFormatLinearPCM}, {AV::AVSampleRateKey, sampleRate},
        {AV::AVNumberOfChannelsKey, channels},          {AV::AVLinearPCMBitDepthKey, pcmBitDepth},
        {AV::AVLinearPCMIsBigEndianKey, false},         {AV::AVLinearPCMIsFloatKey, false},
        {AV::AVLinearPCMIsNonInterleaved, false},
    };
  }
  return {
      {AV::AVFormatIDKey, CA::kAudioFormatMPEG4AAC},
      {AV::AVSampleRateKey, sampleRate},
      {AV::AVNumberOfChannelsKey, channels},
      {AV::AVEncoderBitRateKey, encoderBitRate},
      {AV::AVEncoderAudioQualityKey, AV::AVAudioQualityHigh},
  };
}

}  // namespace audrel
