#include "cli/MeteredAudioFramework.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <utility>

#include "cli/RecordingMeter.h"

namespace audrel::cli {

namespace {

class MeteredAudioFile final : public AV::AudioFile {
 public:
  MeteredAudioFile(std::shared_ptr<AV::AudioFile> file, RecordingMeter& meter,
                   std::optional<MeteredAudioFramework::Limit> limit)
      : file_(std::move(file)), meter_(meter), limit_(std::move(limit)) {}

  std::optional<NS::Error> write(AV::PCMBuffer& buffer) override {
    if (!limit_.has_value()) {
      return writeMetered(buffer);
    }
    const auto left = framesLeft(buffer.format().sampleRate());
    if (left == 0) {
      return std::nullopt;
    }
    if (buffer.frameLength() > left) {
      buffer.setFrameLength(static_cast<std::uint32_t>(left));
    }
    delivered_ += buffer.frameLength();
    auto error = writeMetered(buffer);
    if (buffer.frameLength() == left) {
      limit_->reached();
    }
    return error;
  }

 private:
  std::uint64_t framesLeft(double sampleRate) const {
    const double seconds = std::chrono::duration<double>(limit_->length).count();
    const auto frames =
        static_cast<std::uint64_t>(std::max(std::llround(seconds * sampleRate), 1LL));
    return frames - std::min(frames, delivered_);
  }

  std::optional<NS::Error> writeMetered(AV::PCMBuffer& buffer) {
    meter_.add(buffer.frameLength(), buffer.format().sampleRate(), peakOf(buffer));
    auto error = file_->write(buffer);
    if (error.has_value()) {
      meter_.addFailure(*error);
    }
    return error;
  }

  const std::shared_ptr<AV::AudioFile> file_;
  RecordingMeter& meter_;
  const std::optional<MeteredAudioFramework::Limit> limit_;
  std::uint64_t delivered_ = 0;
};

}  // namespace

MeteredAudioFramework::MeteredAudioFramework(AV::AudioFramework& framework, RecordingMeter& meter,
                                             std::optional<Limit> limit)
    : framework_(framework), meter_(meter), limit_(std::move(limit)) {}

std::shared_ptr<const AV::AudioFormat> MeteredAudioFramework::makeFormat(
    const CA::AudioStreamBasicDescription& description) {
  return framework_.makeFormat(description);
}

std::unique_ptr<AV::PCMBuffer> MeteredAudioFramework::makePCMBuffer(
    const std::shared_ptr<const AV::AudioFormat>& format, std::uint32_t frameCapacity) noexcept {
  return framework_.makePCMBuffer(format, frameCapacity);
}

std::shared_ptr<AV::AudioFile> MeteredAudioFramework::openForWriting(
    const std::filesystem::path& url, const AV::Settings& settings,
    AV::AudioCommonFormat commonFormat, bool interleaved, NS::Error* error) {
  auto file = framework_.openForWriting(url, settings, commonFormat, interleaved, error);
  wasNameTaken_ = file == nullptr && error->domain == NS::POSIXErrorDomain && error->code == EEXIST;
  if (file == nullptr) {
    return nullptr;
  }
  return std::make_shared<MeteredAudioFile>(std::move(file), meter_, limit_);
}

}  // namespace audrel::cli
