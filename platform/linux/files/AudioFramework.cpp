#include "platform/linux/files/AudioFramework.h"

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/Identity.h"
#include "platform/linux/aac/AacEncoder.h"
#include "platform/linux/files/AudioFile.h"
#include "platform/linux/files/FileErrors.h"
#include "platform/linux/files/M4aFrameWriter.h"
#include "platform/linux/files/PcmBuffer.h"
#include "platform/linux/files/PcmFormat.h"
#include "platform/linux/files/WavFrameWriter.h"

namespace audrel::linuxos {
namespace {

/// For how many seconds memory keeps what cannot be written.
double memoryOf(const FileSettings& settings) {
  const double bytesPerSecond =
      settings.container == FileSettings::Container::m4a
          ? static_cast<double>(settings.bitRate) / 8
          : settings.sampleRate * settings.channels * sizeof(std::int16_t);
  return static_cast<double>(BlockFile::defaultMemoryLimit) / bytesPerSecond;
}

/// Creates the file and starts `Writer` on it. A file whose beginning cannot be written is removed
/// again: it holds nothing.
template <typename Writer, typename Order, typename... Arguments>
std::optional<Writer> startFile(const RawFileCreator& create, const Order& order, NS::Error* error,
                                Arguments&&... arguments) {
  int code = 0;
  auto file = create(order.path, &code);
  if (!file) {
    *error = creationError(order.path, code);
    return std::nullopt;
  }
  if (order.recording != nullptr) {
    file = order.recording->noted(std::move(file));
  }
  RawFile& started = *file;
  BlockFile blocks(std::move(file), BlockFile::defaultMemoryLimit,
                   {.blockEnded = [notices = order.notices](
                                      const auto& failure) { notices->blockEnded(failure); },
                    .cannotFlush = [logger = order.logger, path = order.path](
                                       int why) { logger->error(unofferedFlush(path, why)); }});
  Writer writer(std::move(blocks), std::forward<Arguments>(arguments)...);
  code = writer.start();
  if (code != 0) {
    *error = plainError(code, reason(order.path, code));
    started.remove();
    return std::nullopt;
  }
  return writer;
}

}  // namespace

AudioFramework::AudioFramework(os::Log& log, RawFileCreator createFile)
    : createFile_(std::move(createFile)),
      logger_(log.makeLogger(identity::bundleIdentifier, "file")) {}

std::shared_ptr<const AV::AudioFormat> AudioFramework::makeFormat(
    const CA::AudioStreamBasicDescription& description) {
  return PcmFormat::make(description);
}

std::unique_ptr<AV::PCMBuffer> AudioFramework::makePCMBuffer(
    const std::shared_ptr<const AV::AudioFormat>& format, std::uint32_t frameCapacity) noexcept {
  return PcmBuffer::make(format, frameCapacity);
}

std::shared_ptr<AV::AudioFile> AudioFramework::openForWriting(const std::filesystem::path& url,
                                                              const AV::Settings& settings,
                                                              AV::AudioCommonFormat commonFormat,
                                                              bool interleaved, NS::Error* error) {
  if (commonFormat == AV::AudioCommonFormat::otherFormat) {
    *error = plainError(EINVAL, "Audio of this format cannot be recorded.");
    return nullptr;
  }
  const auto read = readSettings(settings, error);
  if (!read) {
    return nullptr;
  }
  auto recording =
      entries_ == nullptr ? nullptr : std::make_unique<RunningRecording>(*entries_, url, logger_);
  const Order order = {url, *read, std::make_shared<SavingNotices>(url, memoryOf(*read), tell_),
                       recording.get(), logger_};
  auto writer = makeWriter(order, error);
  if (!writer) {
    return nullptr;
  }
  const AudioFile::ProcessingFormat format = {
      commonFormat, interleaved, static_cast<double>(read->sampleRate), read->channels};
  auto loss = std::make_shared<capture::FileLoss>();
  {
    const std::lock_guard lock(mutex_);
    loss_ = loss;
  }
  return std::make_shared<AudioFile>(std::move(recording), std::move(writer), format, url, logger_,
                                     order.notices, std::move(loss));
}

capture::FileLoss AudioFramework::loss() const {
  const std::lock_guard lock(mutex_);
  return *loss_;
}

std::unique_ptr<FrameWriter> AudioFramework::makeWriter(const Order& order, NS::Error* error) {
  switch (order.settings.container) {
    case FileSettings::Container::m4a:
      return makeM4a(order, error);
    case FileSettings::Container::wav:
      return makeWav(order, error);
  }
  return nullptr;
}

std::unique_ptr<FrameWriter> AudioFramework::makeM4a(const Order& order, NS::Error* error) {
  const FileSettings& settings = order.settings;
  const AacEncoder::Settings encoding = {settings.sampleRate, settings.channels, settings.bitRate};
  std::string problem;
  auto encoder = AacEncoder::open(encoding, &problem);
  if (!encoder) {
    *error = plainError(ENOTSUP, problem);
    return nullptr;
  }
  auto writer = startFile<M4aWriter>(createFile_, order, error, trackOf(*encoder, encoding),
                                     [encoding] { return AacEncoder::silentPacket(encoding); });
  if (!writer) {
    return nullptr;
  }
  return std::make_unique<M4aFrameWriter>(std::move(*writer), std::move(encoder), settings.channels,
                                          settings.sampleRate, order.path);
}

std::unique_ptr<FrameWriter> AudioFramework::makeWav(const Order& order, NS::Error* error) {
  const FileSettings& settings = order.settings;
  if (settings.channels > WavFormat::maximumChannels) {
    *error = plainError(ENOTSUP, "WAV cannot hold " + std::to_string(settings.channels) +
                                     " channels. Record fewer.");
    return nullptr;
  }
  const WavFormat format = {settings.sampleRate, static_cast<std::uint16_t>(settings.channels)};
  auto writer = startFile<WavWriter>(createFile_, order, error, format);
  if (!writer) {
    return nullptr;
  }
  return std::make_unique<WavFrameWriter>(std::move(*writer), format, order.path);
}

}  // namespace audrel::linuxos
