#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include "platform/AVFAudio.h"
#include "platform/Diagnostics.h"
#include "platform/Log.h"
#include "platform/linux/files/FrameWriter.h"
#include "platform/linux/files/RunningRecording.h"
#include "platform/linux/files/SampleConversion.h"
#include "platform/linux/files/SavingNotices.h"

namespace audrel::linuxos {

/// A file open for writing. One thread at a time, any thread.
class AudioFile final : public AV::AudioFile {
 public:
  /// The format in which `write` takes its buffers.
  struct ProcessingFormat {
    AV::AudioCommonFormat commonFormat = AV::AudioCommonFormat::otherFormat;  ///< never this
    bool interleaved = true;
    double sampleRate = 0;
    std::uint32_t channels = 0;
  };

  /// `recording` may be null.
  AudioFile(std::unique_ptr<RunningRecording> recording, std::unique_ptr<FrameWriter> writer,
            const ProcessingFormat& format, std::filesystem::path path,
            std::shared_ptr<os::Logger> logger, std::shared_ptr<SavingNotices> notices,
            std::shared_ptr<capture::FileLoss> loss);

  /// Finishes the file, sets `loss`, and logs an error when that fails. The user is told that it is
  /// saved, or what is missing.
  ~AudioFile() override;

  AudioFile(const AudioFile&) = delete;
  AudioFile& operator=(const AudioFile&) = delete;

  /// A buffer of another format is refused, and nothing of it written.
  std::optional<NS::Error> write(AV::PCMBuffer& buffer) override;

 private:
  bool takes(AV::PCMBuffer& buffer) const;

  std::unique_ptr<RunningRecording> recording_;  ///< outlives the file, which is the writer's
  std::unique_ptr<FrameWriter> writer_;
  ProcessingFormat format_;
  SampleConverter converter_;
  std::filesystem::path path_;
  std::shared_ptr<os::Logger> logger_;
  std::shared_ptr<SavingNotices> notices_;
  std::shared_ptr<capture::FileLoss> loss_;
  std::uint64_t frames_ = 0;  ///< that it was given
};

}  // namespace audrel::linuxos
