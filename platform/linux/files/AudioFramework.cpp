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

/// Creates `path` and starts `Writer` on it. A file whose beginning cannot be written is removed
/// again: it holds nothing.
template <typename Writer, typename... Arguments>
std::optional<Writer> startFile(const RawFileCreator& create, const std::filesystem::path& path,
                                NS::Error* error, Arguments&&... arguments) {
  int code = 0;
  auto file = create(path, &code);
  if (!file) {
    *error = creationError(path, code);
    return std::nullopt;
  }
  RawFile& started = *file;
  Writer writer(BlockFile(std::move(file)), std::forward<Arguments>(arguments)...);
  code = writer.start();
  if (code != 0) {
    *error = plainError(code, reason(path, code));
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
  auto writer = makeWriter(url, *read, error);
  if (!writer) {
    return nullptr;
  }
  const AudioFile::ProcessingFormat format = {
      commonFormat, interleaved, static_cast<double>(read->sampleRate), read->channels};
  return std::make_shared<AudioFile>(std::move(writer), format, url, logger_);
}

std::unique_ptr<FrameWriter> AudioFramework::makeWriter(const std::filesystem::path& path,
                                                        const FileSettings& settings,
                                                        NS::Error* error) {
  switch (settings.container) {
    case FileSettings::Container::m4a:
      return makeM4a(path, settings, error);
    case FileSettings::Container::wav:
      return makeWav(path, settings, error);
  }
  return nullptr;
}

std::unique_ptr<FrameWriter> AudioFramework::makeM4a(const std::filesystem::path& path,
                                                     const FileSettings& settings,
                                                     NS::Error* error) {
  const AacEncoder::Settings encoding = {settings.sampleRate, settings.channels, settings.bitRate};
  std::string problem;
  auto encoder = AacEncoder::open(encoding, &problem);
  if (!encoder) {
    *error = plainError(ENOTSUP, problem);
    return nullptr;
  }
  auto writer = startFile<M4aWriter>(createFile_, path, error, trackOf(*encoder, encoding),
                                     [encoding] { return AacEncoder::silentPacket(encoding); });
  if (!writer) {
    return nullptr;
  }
  return std::make_unique<M4aFrameWriter>(std::move(*writer), std::move(encoder), settings.channels,
                                          settings.sampleRate, path);
}

std::unique_ptr<FrameWriter> AudioFramework::makeWav(const std::filesystem::path& path,
                                                     const FileSettings& settings,
                                                     NS::Error* error) {
  if (settings.channels > WavFormat::maximumChannels) {
    *error = plainError(ENOTSUP, "WAV cannot hold " + std::to_string(settings.channels) +
                                     " channels. Record fewer.");
    return nullptr;
  }
  const WavFormat format = {settings.sampleRate, static_cast<std::uint16_t>(settings.channels)};
  auto writer = startFile<WavWriter>(createFile_, path, error, format);
  if (!writer) {
    return nullptr;
  }
  return std::make_unique<WavFrameWriter>(std::move(*writer), format, path);
}

}  // namespace audrel::linuxos
