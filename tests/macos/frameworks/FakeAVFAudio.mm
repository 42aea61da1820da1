#import <AVFAudio/AVFAudio.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "tests/macos/frameworks/FakeCoreAudio.h"
#include "tests/macos/frameworks/FakeFoundation.h"
#include "tests/macos/frameworks/FakeMac.h"
#include "tests/macos/frameworks/FileOnDisk.h"

using audrel::fakemac::Failure;
using audrel::fakemac::mac;

extern "C" id objc_retainAutorelease(id object);

// Not the names of the constants, so that a name where the constant belongs shows.
NSString* const AVFormatIDKey = @"key of AVFormatIDKey";
NSString* const AVSampleRateKey = @"key of AVSampleRateKey";
NSString* const AVNumberOfChannelsKey = @"key of AVNumberOfChannelsKey";
NSString* const AVEncoderBitRateKey = @"key of AVEncoderBitRateKey";
NSString* const AVEncoderAudioQualityKey = @"key of AVEncoderAudioQualityKey";
NSString* const AVLinearPCMBitDepthKey = @"key of AVLinearPCMBitDepthKey";
NSString* const AVLinearPCMIsBigEndianKey = @"key of AVLinearPCMIsBigEndianKey";
NSString* const AVLinearPCMIsFloatKey = @"key of AVLinearPCMIsFloatKey";
NSString* const AVLinearPCMIsNonInterleaved = @"key of AVLinearPCMIsNonInterleaved";

/// Gives it, and tells of it.
static std::string giveError(const Failure& failure, NSError* __autoreleasing* error) {
  *error = audrel::fakemac::made(failure);
  return "error \"" + failure.description + "\"";
}

/// Out of a pool of its own, which the exception leaves behind.
static void raiseIfAskedTo(const std::string& call) {
  const auto reason = mac().raising.find(call);
  if (reason != mac().raising.end()) {
    mac().note(call + " raises an exception");
    @autoreleasepool {
      objc_retainAutorelease([[NSObject alloc] init]);
      audrel::fakemac::raise("com.apple.coreaudio.avfaudio", reason->second);
    }
  }
}

@implementation AVAudioFormat {
  AudioStreamBasicDescription _description;
}

- (instancetype)initWithStreamDescription:(const AudioStreamBasicDescription*)description {
  raiseIfAskedTo("AVAudioFormat.initWithStreamDescription:");
  _description = *description;
  const bool isKnown = (description->mFormatID == kAudioFormatLinearPCM ||
                        description->mFormatID == kAudioFormatMPEG4AAC) &&
                       description->mSampleRate > 0;
  mac().note("AVAudioFormat(" + audrel::fakemac::described(_description) + ") -> " +
             (isKnown ? "format" : "nil"));
  return isKnown ? self : nil;
}

- (const AudioStreamBasicDescription*)streamDescription {
  return &_description;
}

- (double)sampleRate {
  return _description.mSampleRate;
}

- (AVAudioChannelCount)channelCount {
  return _description.mChannelsPerFrame;
}

- (BOOL)isInterleaved {
  return (_description.mFormatFlags & kAudioFormatFlagIsNonInterleaved) == 0;
}

- (AVAudioCommonFormat)commonFormat {
  if (_description.mFormatID != kAudioFormatLinearPCM) {
    return AVAudioOtherFormat;
  }
  const bool isFloat = (_description.mFormatFlags & kAudioFormatFlagIsFloat) != 0;
  switch (_description.mBitsPerChannel) {
    case 16:
      return AVAudioPCMFormatInt16;
    case 32:
      return isFloat ? AVAudioPCMFormatFloat32 : AVAudioPCMFormatInt32;
    case 64:
      return AVAudioPCMFormatFloat64;
    default:
      return AVAudioOtherFormat;
  }
}

@end

@implementation AVAudioBuffer
@end

@implementation AVAudioPCMBuffer {
  AVAudioFormat* _format;
  AVAudioFrameCount _frameCapacity;
  AVAudioFrameCount _frameLength;
  std::unique_ptr<std::byte[]> _list;
  std::vector<std::unique_ptr<std::byte[]>> _data;
}

- (instancetype)initWithPCMFormat:(AVAudioFormat*)format
                    frameCapacity:(AVAudioFrameCount)frameCapacity {
  raiseIfAskedTo("AVAudioPCMBuffer.initWithPCMFormat:frameCapacity:");
  if (format.streamDescription->mFormatID != kAudioFormatLinearPCM) {
    audrel::fakemac::raise("com.apple.coreaudio.avfaudio", "no format of linear PCM");
  }
  mac().note("AVAudioPCMBuffer(" + std::to_string(frameCapacity) + " frames) -> " +
             (mac().hasMemoryForBuffers ? "buffer" : "nil"));
  if (!mac().hasMemoryForBuffers) {
    return nil;
  }
  _format = format;
  _frameCapacity = frameCapacity;
  _frameLength = frameCapacity;  // of use to nobody: its page promises no value
  const UInt32 count = format.isInterleaved ? 1 : format.channelCount;
  _list = std::make_unique<std::byte[]>(offsetof(AudioBufferList, mBuffers) +
                                        count * sizeof(AudioBuffer));
  AudioBufferList* list = reinterpret_cast<AudioBufferList*>(_list.get());
  list->mNumberBuffers = count;
  for (UInt32 i = 0; i < count; ++i) {
    _data.push_back(
        std::make_unique<std::byte[]>(frameCapacity * format.streamDescription->mBytesPerFrame));
    (&list->mBuffers[0])[i] = {format.channelCount / count, 0, _data.back().get()};
  }
  return self;
}

- (AVAudioFormat*)format {
  return _format;
}

/// With the sizes of the capacity, whatever the length is, as its page says; and the sizes and the
/// length change each other.
- (AudioBufferList*)mutableAudioBufferList {
  self.frameLength = _frameCapacity;
  return reinterpret_cast<AudioBufferList*>(_list.get());
}

- (AVAudioFrameCount)frameCapacity {
  return _frameCapacity;
}

- (AVAudioFrameCount)frameLength {
  return _frameLength;
}

- (void)setFrameLength:(AVAudioFrameCount)frames {
  if (frames > _frameCapacity) {
    abort();
  }
  _frameLength = frames;
  auto* list = reinterpret_cast<AudioBufferList*>(_list.get());
  for (UInt32 i = 0; i < list->mNumberBuffers; ++i) {
    (&list->mBuffers[0])[i].mDataByteSize = frames * _format.streamDescription->mBytesPerFrame;
  }
}

@end

/// The value of a number.
static double number(id described) {
  const std::string text = audrel::fakemac::described(described);
  return std::stod(text.substr(text.find(' ')));
}

@interface FakeFilePart : NSObject
@end

@implementation FakeFilePart
@end

@implementation AVAudioFile {
  std::size_t _index;
  BOOL _isOpen;
  std::unique_ptr<audrel::fakemac::FileOnDisk> _onDisk;
}

- (instancetype)initForWriting:(NSURL*)url
                      settings:(NSDictionary<NSString*, id>*)settings
                  commonFormat:(AVAudioCommonFormat)format
                   interleaved:(BOOL)interleaved
                         error:(NSError* __autoreleasing*)error {
  // The system's own code leaves references of its own in the caller's pool.
  objc_retainAutorelease(self);
  raiseIfAskedTo("AVAudioFile.initForWriting:settings:commonFormat:interleaved:error:");
  const std::string path = url.fileSystemRepresentation;
  const std::string described = audrel::fakemac::described(settings);
  const std::string call = "AVAudioFile(forWriting \"" + path + "\", settings " + described +
                           ", commonFormat " + std::to_string(format) + ", interleaved " +
                           (interleaved ? "true" : "false") + ") -> ";
  if (mac().openFails) {
    mac().note(call + giveError(*mac().openFails, error));
    return nil;
  }
  if (mac().hasDisk) {
    const bool isWav = number(settings[AVFormatIDKey]) == kAudioFormatLinearPCM;
    const auto rate = static_cast<std::uint32_t>(number(settings[AVSampleRateKey]));
    const auto channels = static_cast<std::uint16_t>(number(settings[AVNumberOfChannelsKey]));
    _onDisk = audrel::fakemac::FileOnDisk::create(path, isWav, rate, channels);
    if (_onDisk == nullptr) {
      mac().note(call + giveError({"com.apple.coreaudio.avfaudio", errno, strerror(errno)}, error));
      return nil;
    }
  }
  mac().note(call + "file");
  _index = mac().files.size();
  _isOpen = YES;
  mac().files.push_back({path, static_cast<bool>(interleaved), {}, {}, true});
  return self;
}

- (BOOL)writeFromBuffer:(const AVAudioPCMBuffer*)buffer error:(NSError* __autoreleasing*)error {
  objc_retainAutorelease(self);
  raiseIfAskedTo("AVAudioFile.writeFromBuffer:error:");
  auto* writable = const_cast<AVAudioPCMBuffer*>(buffer);
  const AVAudioFrameCount frames = writable.frameLength;
  const std::string call = "AVAudioFile.writeFromBuffer: " + std::to_string(frames) + " frames -> ";
  if (mac().writeFails) {
    mac().note(call + "NO, " + giveError(*mac().writeFails, error));
    return NO;
  }
  mac().note(call + "YES");
  auto& file = mac().files[_index];
  file.writes.push_back(frames);
  const AudioBufferList& list = *writable.mutableAudioBufferList;
  const UInt32 size = frames * writable.format.streamDescription->mBytesPerFrame;
  for (UInt32 i = 0; i < list.mNumberBuffers; ++i) {
    const auto* bytes = static_cast<const std::byte*>((&list.mBuffers[0])[i].mData);
    file.bytes.insert(file.bytes.end(), bytes, bytes + size);
  }
  if (_onDisk != nullptr) {
    _onDisk->append(static_cast<const float*>(list.mBuffers[0].mData), frames);
  }
  return YES;
}

/// What it is made of goes with the pool of whoever lets it go.
- (void)dealloc {
  objc_retainAutorelease([[FakeFilePart alloc] init]);
  if (_isOpen) {
    mac().files[_index].isOpen = false;
    mac().note("AVAudioFile closed: " + mac().files[_index].path);
  }
}

@end
