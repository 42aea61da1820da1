#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/AVFAudio.h"
#include "tests/fakes/Journal.h"

namespace audrel::fakes {

class FakeFormat final : public AV::AudioFormat {
 public:
  explicit FakeFormat(const CA::AudioStreamBasicDescription& description)
      : description_(description) {}

  const CA::AudioStreamBasicDescription& streamDescription() const override { return description_; }
  double sampleRate() const override { return description_.mSampleRate; }
  std::uint32_t channelCount() const override { return description_.mChannelsPerFrame; }
  bool isInterleaved() const override;
  AV::AudioCommonFormat commonFormat() const override;

 private:
  CA::AudioStreamBasicDescription description_;
};

/// One write, as the file received it.
struct WrittenBuffer {
  std::uint32_t frames = 0;
  std::vector<std::vector<std::byte>> buffers;
};

/// What became of a file that was opened. Outlives the file.
struct FileRecord {
  std::filesystem::path url;
  AV::Settings settings;
  AV::AudioCommonFormat commonFormat = AV::AudioCommonFormat::otherFormat;
  bool interleaved = false;
  std::vector<WrittenBuffer> writes;  ///< those that succeeded
  bool isOpen = true;
};

/// Formats, buffers and files in memory. Every block of a buffer is an allocation of its own, so
/// that the address sanitizer sees a byte too many.
class FakeAudio final : public AV::AudioFramework {
 public:
  explicit FakeAudio(Journal& journal) : journal_(journal) {}

  /// No description describes a format, not even one of linear PCM.
  bool makesNoFormat = false;
  /// No buffer can be made.
  bool hasNoMemory = false;
  /// Called while a buffer is being made.
  std::function<void()> whenBufferIsMade;
  /// Called in the middle of every write, and when a file was closed, on whichever thread.
  std::function<void()> whenWriting;
  std::function<void()> whenClosed;
  /// Those of a list that carry no data.
  std::set<std::uint32_t> buffersWithoutData;
  /// Why the next files cannot be opened.
  std::optional<NS::Error> openError;
  /// Why the next writes fail.
  std::optional<NS::Error> writeError;

  /// Every file that was opened, in that order.
  std::vector<std::shared_ptr<FileRecord>> files;

  std::shared_ptr<const AV::AudioFormat> makeFormat(
      const CA::AudioStreamBasicDescription& description) override;
  std::unique_ptr<AV::PCMBuffer> makePCMBuffer(const std::shared_ptr<const AV::AudioFormat>& format,
                                               std::uint32_t frameCapacity) noexcept override;
  std::shared_ptr<AV::AudioFile> openForWriting(const std::filesystem::path& url,
                                                const AV::Settings& settings,
                                                AV::AudioCommonFormat commonFormat,
                                                bool interleaved, NS::Error* error) override;

 private:
  class Buffer;
  class File;

  Journal& journal_;
};

}  // namespace audrel::fakes
