#include "platform/macos/AudioFramework.h"

#import <AVFAudio/AVFAudio.h>

#include <bit>
#include <new>
#include <span>

#include "platform/macos/AudioLayout.h"
#include "platform/macos/Text.h"

namespace audrel::macos {
namespace {

static_assert(AVAudioOtherFormat == static_cast<NSUInteger>(AV::AudioCommonFormat::otherFormat));
static_assert(AVAudioPCMFormatFloat32 ==
              static_cast<NSUInteger>(AV::AudioCommonFormat::pcmFormatFloat32));
static_assert(AVAudioPCMFormatFloat64 ==
              static_cast<NSUInteger>(AV::AudioCommonFormat::pcmFormatFloat64));
static_assert(AVAudioPCMFormatInt16 ==
              static_cast<NSUInteger>(AV::AudioCommonFormat::pcmFormatInt16));
static_assert(AVAudioPCMFormatInt32 ==
              static_cast<NSUInteger>(AV::AudioCommonFormat::pcmFormatInt32));
static_assert(AV::AVAudioQualityHigh == ::AVAudioQualityHigh);

/// What `call` raised; nil when nothing. The audio framework raises an exception, where it could
/// give an error, for what it takes for a mistake of the program, and none may end a recording.
/// Within the caller's autorelease pool, which takes the pools along that the exception leaves
/// behind.
template <typename Call>
NSException* raisedBy(Call call) {
  @try {
    call();
    return nil;
  } @catch (NSException* exception) {
    return exception;
  }
}

class AudioFormat final : public AV::AudioFormat {
 public:
  explicit AudioFormat(AVAudioFormat* format)
      : format_(format),
        description_(std::bit_cast<CA::AudioStreamBasicDescription>(*format.streamDescription)) {}

  AVAudioFormat* systemFormat() const { return format_; }

  const CA::AudioStreamBasicDescription& streamDescription() const override { return description_; }
  double sampleRate() const override { return format_.sampleRate; }
  std::uint32_t channelCount() const override { return format_.channelCount; }
  bool isInterleaved() const override { return format_.isInterleaved; }
  AV::AudioCommonFormat commonFormat() const override {
    return static_cast<AV::AudioCommonFormat>(format_.commonFormat);
  }

 private:
  AVAudioFormat* format_;
  CA::AudioStreamBasicDescription description_;
};

class PCMBuffer final : public AV::PCMBuffer {
 public:
  PCMBuffer(AVAudioPCMBuffer* buffer, const std::shared_ptr<const AV::AudioFormat>& format)
      : buffer_(buffer), format_(format) {}

  AVAudioPCMBuffer* systemBuffer() const { return buffer_; }

  const AV::AudioFormat& format() const override { return *format_; }
  std::uint32_t frameCapacity() const override { return buffer_.frameCapacity; }
  std::uint32_t frameLength() const override { return buffer_.frameLength; }
  void setFrameLength(std::uint32_t frames) override { buffer_.frameLength = frames; }

  /// The framework's list has the sizes of the capacity, and the length may follow them: so it is
  /// read before, and set afterwards.
  CA::AudioBufferList* mutableAudioBufferList() override {
    const AVAudioFrameCount frames = buffer_.frameLength;
    auto* list = reinterpret_cast<CA::AudioBufferList*>(buffer_.mutableAudioBufferList);
    const std::uint32_t size = frames * format_->streamDescription().mBytesPerFrame;
    for (CA::AudioBuffer& part : std::span(list->mBuffers, list->mNumberBuffers)) {
      part.mDataByteSize = size;
    }
    buffer_.frameLength = frames;
    return list;
  }

 private:
  AVAudioPCMBuffer* buffer_;
  std::shared_ptr<const AV::AudioFormat> format_;
};

constexpr const char* noReason = "The audio framework gave no reason.";

NS::Error programError(NSError* error) {
  if (error == nil) {
    return {"", 0, noReason};
  }
  return {utf8(error.domain), error.code, utf8(error.localizedDescription)};
}

NS::Error programError(NSException* exception) {
  return {utf8(exception.name), 0, exception.reason == nil ? noReason : utf8(exception.reason)};
}

class AudioFile final : public AV::AudioFile {
 public:
  explicit AudioFile(AVAudioFile* file) : file_(file) {}
  AudioFile(const AudioFile&) = delete;
  AudioFile& operator=(const AudioFile&) = delete;
  ~AudioFile() override {
    @autoreleasepool {
      file_ = nil;
    }
  }

  std::optional<NS::Error> write(AV::PCMBuffer& buffer) override {
    @autoreleasepool {
      AVAudioPCMBuffer* systemBuffer = static_cast<PCMBuffer&>(buffer).systemBuffer();
      NSError* __autoreleasing error = nil;
      BOOL isWritten = NO;
      NSException* exception =
          raisedBy([&] { isWritten = [file_ writeFromBuffer:systemBuffer error:&error]; });
      if (isWritten) {
        return std::nullopt;
      }
      return exception == nil ? programError(error) : programError(exception);
    }
  }

 private:
  AVAudioFile* file_;
};

/// The framework's constant for a key of the interface.
NSString* systemKey(const std::string& key) {
  struct Key {
    const char* name;
    NSString* constant;
  };
  const Key keys[] = {
      {AV::AVFormatIDKey, ::AVFormatIDKey},
      {AV::AVSampleRateKey, ::AVSampleRateKey},
      {AV::AVNumberOfChannelsKey, ::AVNumberOfChannelsKey},
      {AV::AVEncoderBitRateKey, ::AVEncoderBitRateKey},
      {AV::AVEncoderAudioQualityKey, ::AVEncoderAudioQualityKey},
      {AV::AVLinearPCMBitDepthKey, ::AVLinearPCMBitDepthKey},
      {AV::AVLinearPCMIsBigEndianKey, ::AVLinearPCMIsBigEndianKey},
      {AV::AVLinearPCMIsFloatKey, ::AVLinearPCMIsFloatKey},
      {AV::AVLinearPCMIsNonInterleaved, ::AVLinearPCMIsNonInterleaved},
  };
  for (const Key& known : keys) {
    if (key == known.name) {
      return known.constant;
    }
  }
  return nsString(key);
}

struct SystemSetting {
  NSNumber* operator()(std::uint32_t value) const { return [NSNumber numberWithUnsignedInt:value]; }
  NSNumber* operator()(double value) const { return [NSNumber numberWithDouble:value]; }
  NSNumber* operator()(std::int64_t value) const { return [NSNumber numberWithLongLong:value]; }
  NSNumber* operator()(bool value) const { return [NSNumber numberWithBool:value]; }
};

NSDictionary<NSString*, id>* systemSettings(const AV::Settings& settings) {
  NSMutableDictionary<NSString*, id>* dictionary = [NSMutableDictionary dictionary];
  for (const auto& [key, value] : settings) {
    dictionary[systemKey(key)] = std::visit(SystemSetting{}, value);
  }
  return dictionary;
}

}  // namespace

std::shared_ptr<const AV::AudioFormat> AudioFramework::makeFormat(
    const CA::AudioStreamBasicDescription& description) {
  @autoreleasepool {
    const auto* system = reinterpret_cast<const ::AudioStreamBasicDescription*>(&description);
    AVAudioFormat* format = nil;
    raisedBy([&] { format = [[AVAudioFormat alloc] initWithStreamDescription:system]; });
    return format == nil ? nullptr : std::make_shared<AudioFormat>(format);
  }
}

std::unique_ptr<AV::PCMBuffer> AudioFramework::makePCMBuffer(
    const std::shared_ptr<const AV::AudioFormat>& format, std::uint32_t frameCapacity) noexcept {
  @autoreleasepool {
    AVAudioFormat* systemFormat = static_cast<const AudioFormat&>(*format).systemFormat();
    AVAudioPCMBuffer* buffer = nil;
    raisedBy([&] {
      buffer = [[AVAudioPCMBuffer alloc] initWithPCMFormat:systemFormat
                                             frameCapacity:frameCapacity];
      // What it is at first, no page says.
      buffer.frameLength = 0;
    });
    if (buffer == nil) {
      return nullptr;
    }
    return std::unique_ptr<AV::PCMBuffer>(new (std::nothrow) PCMBuffer(buffer, format));
  }
}

std::shared_ptr<AV::AudioFile> AudioFramework::openForWriting(const std::filesystem::path& url,
                                                              const AV::Settings& settings,
                                                              AV::AudioCommonFormat commonFormat,
                                                              bool interleaved, NS::Error* error) {
  @autoreleasepool {
    NSError* __autoreleasing systemError = nil;
    AVAudioFile* file = nil;
    NSException* exception = raisedBy([&] {
      file = [[AVAudioFile alloc] initForWriting:fileURL(url)
                                        settings:systemSettings(settings)
                                    commonFormat:static_cast<AVAudioCommonFormat>(commonFormat)
                                     interleaved:interleaved
                                           error:&systemError];
    });
    if (file == nil) {
      *error = exception == nil ? programError(systemError) : programError(exception);
      return nullptr;
    }
    return std::make_shared<AudioFile>(file);
  }
}

}  // namespace audrel::macos
