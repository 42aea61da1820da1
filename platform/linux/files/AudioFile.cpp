#include "platform/linux/files/AudioFile.h"

#include <cerrno>
#include <new>
#include <utility>

#include "platform/linux/files/FileErrors.h"

namespace audrel::linuxos {
namespace {

/// Without its sentence when there is not even memory for that.
NS::Error outOfMemory() noexcept {
  try {
    return plainError(ENOMEM, "There is no memory left to record with. Close some programs.");
  } catch (const std::bad_alloc&) {
    return {{}, ENOMEM, {}};
  }
}

}  // namespace

AudioFile::AudioFile(std::unique_ptr<RunningRecording> recording,
                     std::unique_ptr<FrameWriter> writer, const ProcessingFormat& format,
                     std::filesystem::path path, std::shared_ptr<os::Logger> logger,
                     std::shared_ptr<SavingNotices> notices,
                     std::shared_ptr<capture::FileLoss> loss)
    : recording_(std::move(recording)),
      writer_(std::move(writer)),
      format_(format),
      converter_(format.commonFormat, format.interleaved, format.channels),
      path_(std::move(path)),
      logger_(std::move(logger)),
      notices_(std::move(notices)),
      loss_(std::move(loss)) {}

AudioFile::~AudioFile() {
  try {
    const FrameWriter::Ending ending = writer_->finish();
    if (ending.problem) {
      logger_->error(*ending.problem);
    } else if (recording_) {
      recording_->ended();
    }
    *loss_ = {.missing = ending.missing - ending.silenced,
              .silenced = ending.silenced,
              .why = ending.why};
    notices_->fileEnded(static_cast<double>(frames_) / format_.sampleRate,
                        static_cast<double>(ending.missing) / format_.sampleRate, ending.why);
  } catch (const std::bad_alloc&) {
    logger_->error("Finishing a recording failed: there is no memory left.");
  }
}

std::optional<NS::Error> AudioFile::write(AV::PCMBuffer& buffer) {
  if (!takes(buffer)) {
    return plainError(
        EINVAL, "\"" + path_.filename().string() + "\" was opened for audio of another format.");
  }
  frames_ += buffer.frameLength();
  try {
    return writer_->append(converter_, *buffer.mutableAudioBufferList(), buffer.frameLength());
  } catch (const std::bad_alloc&) {
    return outOfMemory();
  }
}

bool AudioFile::takes(AV::PCMBuffer& buffer) const {
  const AV::AudioFormat& format = buffer.format();
  return format.commonFormat() == format_.commonFormat &&
         format.isInterleaved() == format_.interleaved &&
         format.sampleRate() == format_.sampleRate && format.channelCount() == format_.channels &&
         converter_.holdsFrames(*buffer.mutableAudioBufferList(), buffer.frameLength());
}

}  // namespace audrel::linuxos
