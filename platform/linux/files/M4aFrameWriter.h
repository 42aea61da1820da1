#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>

#include "platform/linux/aac/AacEncoder.h"
#include "platform/linux/files/FrameWriter.h"
#include "platform/linux/files/M4aWriter.h"

namespace audrel::linuxos {

/// The track that the packets of `encoder` make.
mp4::Track trackOf(const AacEncoder& encoder, const AacEncoder::Settings& settings);

/// Encodes frames as they come and hands the packets to an `M4aWriter`.
class M4aFrameWriter final : public FrameWriter {
 public:
  /// `writer` was started with the track of `encoder`; `path` is for messages.
  M4aFrameWriter(M4aWriter writer, std::unique_ptr<AacEncoder> encoder, std::uint32_t channels,
                 std::uint32_t sampleRate, std::filesystem::path path);

  std::optional<NS::Error> append(const SampleConverter& converter,
                                  const CA::AudioBufferList& buffers, std::size_t frames) override;
  Ending finish() override;

 private:
  /// What went wrong in a write. Told only once all frames are taken: telling needs memory.
  struct Problems {
    std::optional<BlockFile::Failure> writing;
    int encoding = 0;  ///< an `errno` value
  };

  void encodePacket(Problems& problems);
  void takePackets(Problems& problems);
  std::optional<NS::Error> error(const Problems& problems) const;

  M4aWriter writer_;
  std::unique_ptr<AacEncoder> encoder_;
  std::uint32_t channels_;
  std::uint32_t sampleRate_;
  std::filesystem::path path_;
  std::size_t framesPerPacket_;
  std::size_t framesInPacket_ = 0;  // that wait in the encoder's input
  std::uint64_t frames_ = 0;        // all that were appended
};

}  // namespace audrel::linuxos
