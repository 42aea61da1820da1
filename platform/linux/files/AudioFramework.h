#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/AVFAudio.h"
#include "platform/Diagnostics.h"
#include "platform/Log.h"
#include "platform/linux/files/EntryFolder.h"
#include "platform/linux/files/FileSettings.h"
#include "platform/linux/files/FrameWriter.h"
#include "platform/linux/files/RawFile.h"
#include "platform/linux/files/RunningRecording.h"
#include "platform/linux/files/SavingNotices.h"
#include "platform/linux/system/Notice.h"

namespace audrel::linuxos {

/// `AV::AudioFramework` for Linux: M4A and WAV files that survive that the program is killed or the
/// disk fills up (docs/files.md).
///
/// A process that wants an error instead of its end when a file-size limit is reached has to ignore
/// SIGXFSZ.
class AudioFramework final : public AV::AudioFramework {
 public:
  /// Files log under the category "file" when finishing them fails; `createFile` makes them.
  explicit AudioFramework(os::Log& log, RawFileCreator createFile = createExclusively);

  /// Files opened from now on have an entry in `entries` while they are recorded. It must outlive
  /// them. Null: they have none.
  void setEntryFolder(const EntryFolder* entries) { entries_ = entries; }

  /// The user is told by `taker` of files opened from now on that cannot be written, from the
  /// thread that writes. It must outlive those files.
  void setNoticeTaker(NoticeTaker taker) { tell_ = std::move(taker); }

  std::shared_ptr<const AV::AudioFormat> makeFormat(
      const CA::AudioStreamBasicDescription& description) override;

  std::unique_ptr<AV::PCMBuffer> makePCMBuffer(const std::shared_ptr<const AV::AudioFormat>& format,
                                               std::uint32_t frameCapacity) noexcept override;

  /// AAC-LC in M4A, 16-bit little-endian PCM in WAV; see `FileSettings`. Creates `url`, which must
  /// not exist. `commonFormat` is not `otherFormat`.
  std::shared_ptr<AV::AudioFile> openForWriting(const std::filesystem::path& url,
                                                const AV::Settings& settings,
                                                AV::AudioCommonFormat commonFormat,
                                                bool interleaved, NS::Error* error) override;

  /// What the file lacks that was opened last, as soon as it is closed. Whoever asks comes after
  /// its closing.
  capture::FileLoss loss() const;

 private:
  /// What is to be written where, and who tells of it.
  struct Order {
    std::filesystem::path path;
    FileSettings settings;
    std::shared_ptr<SavingNotices> notices;
    RunningRecording* recording;  ///< null: it is noted nowhere
    std::shared_ptr<os::Logger> logger;
  };

  std::unique_ptr<FrameWriter> makeWriter(const Order& order, NS::Error* error);
  std::unique_ptr<FrameWriter> makeM4a(const Order& order, NS::Error* error);
  std::unique_ptr<FrameWriter> makeWav(const Order& order, NS::Error* error);

  RawFileCreator createFile_;
  NoticeTaker tell_;
  const EntryFolder* entries_ = nullptr;
  std::shared_ptr<os::Logger> logger_;
  mutable std::mutex mutex_;  ///< files may be opened on several threads
  std::shared_ptr<capture::FileLoss> loss_ = std::make_shared<capture::FileLoss>();
};

}  // namespace audrel::linuxos
