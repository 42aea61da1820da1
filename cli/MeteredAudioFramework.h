#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "cli/RecordingMeter.h"
#include "platform/AVFAudio.h"

namespace audrel::cli {

/// An audio framework whose files feed a meter and end at an exact length. It stands between the
/// engine and the platform's framework, so that all of it happens on the writer queue; making
/// formats and buffers is passed through untouched.
class MeteredAudioFramework final : public AV::AudioFramework {
 public:
  struct Limit {
    /// More than 0. Rounded to frames, and one at least.
    std::chrono::microseconds length;
    /// Called once, on the writer queue, when that much has been delivered; must not throw.
    std::function<void()> reached;
  };

  /// Its files refer to `meter`. Without `limit` they have no end. What is delivered beyond the
  /// limit is dropped; frames that could not be written count for it, since their time has passed.
  MeteredAudioFramework(AV::AudioFramework& framework, RecordingMeter& meter,
                        std::optional<Limit> limit);

  /// Whether there was a file of that name already when one was opened last.
  bool wasNameTaken() const { return wasNameTaken_; }

  std::shared_ptr<const AV::AudioFormat> makeFormat(
      const CA::AudioStreamBasicDescription& description) override;
  std::unique_ptr<AV::PCMBuffer> makePCMBuffer(const std::shared_ptr<const AV::AudioFormat>& format,
                                               std::uint32_t frameCapacity) noexcept override;
  std::shared_ptr<AV::AudioFile> openForWriting(const std::filesystem::path& url,
                                                const AV::Settings& settings,
                                                AV::AudioCommonFormat commonFormat,
                                                bool interleaved, NS::Error* error) override;

 private:
  AV::AudioFramework& framework_;
  RecordingMeter& meter_;
  const std::optional<Limit> limit_;
  bool wasNameTaken_ = false;
};

}  // namespace audrel::cli
