#pragma once

#include "platform/AVFAudio.h"

namespace audrel::macos {

/// AVFAudio. What it makes holds the frameworks' objects by references that it counts itself, with
/// an autorelease pool around each call, so that an `AVAudioFile` is finalised the moment its last
/// owner lets go.
class AudioFramework final : public AV::AudioFramework {
 public:
  std::shared_ptr<const AV::AudioFormat> makeFormat(
      const CA::AudioStreamBasicDescription& description) override;
  std::unique_ptr<AV::PCMBuffer> makePCMBuffer(const std::shared_ptr<const AV::AudioFormat>& format,
                                               std::uint32_t frameCapacity) noexcept override;
  std::shared_ptr<AV::AudioFile> openForWriting(const std::filesystem::path& url,
                                                const AV::Settings& settings,
                                                AV::AudioCommonFormat commonFormat,
                                                bool interleaved, NS::Error* error) override;
};

}  // namespace audrel::macos
