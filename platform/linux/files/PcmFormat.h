#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/AVFAudio.h"

namespace audrel::linuxos {

/// A linear PCM format. Immutable, so it may be read on any thread.
class PcmFormat final : public AV::AudioFormat {
 public:
  /// Null when `description` is not linear PCM or contradicts itself: a rate that is not positive
  /// and finite, no channels, sizes that do not follow from one another, samples wider than their
  /// bytes, a packet of more than one frame.
  static std::shared_ptr<const PcmFormat> make(const CA::AudioStreamBasicDescription& description);

  const CA::AudioStreamBasicDescription& streamDescription() const override { return description_; }
  double sampleRate() const override { return description_.mSampleRate; }
  std::uint32_t channelCount() const override { return description_.mChannelsPerFrame; }
  bool isInterleaved() const override;

  /// `otherFormat` for what is not in this machine's byte order, not packed, or of another width.
  AV::AudioCommonFormat commonFormat() const override { return commonFormat_; }

 private:
  explicit PcmFormat(const CA::AudioStreamBasicDescription& description);

  CA::AudioStreamBasicDescription description_;
  AV::AudioCommonFormat commonFormat_;
};

/// Bytes of one sample of `format`; 0 for `otherFormat`.
std::size_t sampleSize(AV::AudioCommonFormat format);

}  // namespace audrel::linuxos
