#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "platform/CoreAudio.h"
#include "platform/Dispatch.h"
#include "platform/Foundation.h"

/// Formats, buffers and files of AVFAudio.
namespace AV {

enum class AudioCommonFormat : std::uint64_t {
  otherFormat = 0,
  pcmFormatFloat32 = 1,
  pcmFormatFloat64 = 2,
  pcmFormatInt16 = 3,
  pcmFormatInt32 = 4,
};

/// How audio lies in memory. Immutable, so it may be read on any thread.
class AudioFormat {
 public:
  virtual ~AudioFormat() = default;

  virtual const CA::AudioStreamBasicDescription& streamDescription() const = 0;
  virtual double sampleRate() const = 0;
  virtual std::uint32_t channelCount() const = 0;
  virtual bool isInterleaved() const = 0;
  virtual AudioCommonFormat commonFormat() const = 0;
};

/// A run of audio in memory, with memory of its own: one `AudioBuffer` of all channels when its
/// format is interleaved, else one a channel.
class PCMBuffer {
 public:
  virtual ~PCMBuffer() = default;

  virtual const AudioFormat& format() const = 0;
  virtual std::uint32_t frameCapacity() const = 0;

  /// 0 at first.
  virtual std::uint32_t frameLength() const = 0;

  /// At most `frameCapacity()`. Sets every buffer's `mDataByteSize` to match.
  virtual void setFrameLength(std::uint32_t frames) = 0;

  /// Valid as long as the buffer lives. Each buffer of the list has memory for `frameCapacity()`
  /// frames.
  virtual CA::AudioBufferList* mutableAudioBufferList() = 0;

  /// Hands the buffer on to a queue. It is part of the buffer's own allocation, so that with the
  /// buffer everything is at hand that the way to the queue needs.
  dispatch::WorkItem workItem;
};

/// A file open for writing. The last reference to go finalises and closes it: when it is gone, the
/// file is complete, and any program can play it.
class AudioFile {
 public:
  virtual ~AudioFile() = default;

  /// Appends `frameLength()` frames of `buffer`, converted to the file's format. A failed write
  /// leaves the file open, and later writes may succeed.
  virtual std::optional<NS::Error> write(PCMBuffer& buffer) = 0;
};

inline constexpr const char* AVFormatIDKey = "AVFormatIDKey";
inline constexpr const char* AVSampleRateKey = "AVSampleRateKey";
inline constexpr const char* AVNumberOfChannelsKey = "AVNumberOfChannelsKey";
inline constexpr const char* AVEncoderBitRateKey = "AVEncoderBitRateKey";
inline constexpr const char* AVEncoderAudioQualityKey = "AVEncoderAudioQualityKey";
inline constexpr const char* AVLinearPCMBitDepthKey = "AVLinearPCMBitDepthKey";
inline constexpr const char* AVLinearPCMIsBigEndianKey = "AVLinearPCMIsBigEndianKey";
inline constexpr const char* AVLinearPCMIsFloatKey = "AVLinearPCMIsFloatKey";
inline constexpr const char* AVLinearPCMIsNonInterleaved = "AVLinearPCMIsNonInterleaved";

/// `AVAudioQuality.high`.
inline constexpr std::int64_t AVAudioQualityHigh = 96;

/// 32-bit unsigned (format ids), double (rates), integer, Boolean.
using SettingValue = std::variant<std::uint32_t, double, std::int64_t, bool>;
using Settings = std::map<std::string, SettingValue>;

/// Makes the objects above.
class AudioFramework {
 public:
  virtual ~AudioFramework() = default;

  /// `AVAudioFormat`'s `init(streamDescription:)`; null when the description describes no format.
  /// What is no linear PCM may be a format, with no common one, of which no buffer can be made.
  virtual std::shared_ptr<const AudioFormat> makeFormat(
      const CA::AudioStreamBasicDescription& description) = 0;

  /// `AVAudioPCMBuffer`'s `init(pcmFormat:frameCapacity:)`; null when there is no memory.
  /// Called on the IO thread: allocates, but takes no lock of ours and never throws.
  virtual std::unique_ptr<PCMBuffer> makePCMBuffer(const std::shared_ptr<const AudioFormat>& format,
                                                   std::uint32_t frameCapacity) noexcept = 0;

  /// `AVAudioFile`'s `initForWriting:settings:commonFormat:interleaved:error:`; null when `error`
  /// was set, as it is when `url` is a folder, or in none. A file that is there already is an error
  /// and stays, or is replaced whole.
  virtual std::shared_ptr<AudioFile> openForWriting(const std::filesystem::path& url,
                                                    const Settings& settings,
                                                    AudioCommonFormat commonFormat,
                                                    bool interleaved, NS::Error* error) = 0;
};

}  // namespace AV
