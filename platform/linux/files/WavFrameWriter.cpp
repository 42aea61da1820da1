#include "platform/linux/files/WavFrameWriter.h"

#include <algorithm>
#include <bit>
#include <span>
#include <utility>

#include "platform/linux/files/FileErrors.h"

namespace audrel::linuxos {

static_assert(std::endian::native == std::endian::little, "samples are written as they lie here");

WavFrameWriter::WavFrameWriter(WavWriter writer, const WavFormat& format,
                               std::filesystem::path path)
    : writer_(std::move(writer)),
      channels_(format.channels),
      sampleRate_(format.sampleRate),
      path_(std::move(path)),
      framesPerBlock_(std::max<std::size_t>(1, format.sampleRate / 2)) {
  block_.resize(framesPerBlock_ * channels_);
}

std::optional<NS::Error> WavFrameWriter::append(const SampleConverter& converter,
                                                const CA::AudioBufferList& buffers,
                                                std::size_t frames) {
  std::optional<BlockFile::Failure> failure;
  for (std::size_t done = 0; done < frames;) {
    const std::size_t count = std::min(frames - done, framesPerBlock_ - framesInBlock_);
    converter.toInt16(buffers, done, count, &block_[framesInBlock_ * channels_]);
    done += count;
    framesInBlock_ += count;
    if (framesInBlock_ == framesPerBlock_) {
      if (auto blockFailure = writer_.append(takeBlock())) {
        failure = blockFailure;
      }
    }
  }
  frames_ += frames;
  if (failure) {
    return writeError(path_, *failure);
  }
  return std::nullopt;
}

FrameWriter::Ending WavFrameWriter::finish() {
  const int code = writer_.finish(takeBlock());
  const std::uint64_t lost = frames_ - writer_.countedFrames();
  Ending ending{.problem = {},
                .missing = lost + writer_.silencedFrames(),
                .silenced = writer_.silencedFrames(),
                .why = code != 0 ? reason(path_, code) : ""};
  if (code != 0 || lost > 0) {
    ending.problem = finishingProblem(path_, code, lost, sampleRate_);
  }
  return ending;
}

std::span<const std::byte> WavFrameWriter::takeBlock() {
  const std::span block(block_.data(), framesInBlock_ * channels_);
  framesInBlock_ = 0;
  return std::as_bytes(block);
}

}  // namespace audrel::linuxos
