#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "platform/linux/files/FrameWriter.h"
#include "platform/linux/files/WavWriter.h"

namespace audrel::linuxos {

/// Collects 16-bit samples to blocks of half a second, so that a killed recording lacks no more
/// and the system is called four times a second.
class WavFrameWriter final : public FrameWriter {
 public:
  /// `writer` was started; `path` is for messages.
  WavFrameWriter(WavWriter writer, const WavFormat& format, std::filesystem::path path);

  std::optional<NS::Error> append(const SampleConverter& converter,
                                  const CA::AudioBufferList& buffers, std::size_t frames) override;
  Ending finish() override;

 private:
  /// The block so far, which begins again.
  std::span<const std::byte> takeBlock();

  WavWriter writer_;
  std::size_t channels_;
  std::uint32_t sampleRate_;
  std::filesystem::path path_;
  std::vector<std::int16_t> block_;
  std::size_t framesPerBlock_;
  std::size_t framesInBlock_ = 0;
  std::uint64_t frames_ = 0;  // all that were appended
};

}  // namespace audrel::linuxos
