#pragma once

// Pages are below https://developer.apple.com/documentation/avfaudio/
#include <CoreAudioTypes/CoreAudioTypes.h>
#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef uint32_t AVAudioFrameCount;    // avaudioframecount
typedef uint32_t AVAudioChannelCount;  // avaudiochannelcount

// avaudiocommonformat
typedef CF_ENUM(NSUInteger, AVAudioCommonFormat) {
  AVAudioOtherFormat = 0,
  AVAudioPCMFormatFloat32 = 1,
  AVAudioPCMFormatFloat64 = 2,
  AVAudioPCMFormatInt16 = 3,
  AVAudioPCMFormatInt32 = 4,
};

// avformatidkey and so on
FOUNDATION_EXPORT NSString* const AVFormatIDKey;
FOUNDATION_EXPORT NSString* const AVSampleRateKey;
FOUNDATION_EXPORT NSString* const AVNumberOfChannelsKey;
FOUNDATION_EXPORT NSString* const AVEncoderBitRateKey;
FOUNDATION_EXPORT NSString* const AVEncoderAudioQualityKey;
FOUNDATION_EXPORT NSString* const AVLinearPCMBitDepthKey;
FOUNDATION_EXPORT NSString* const AVLinearPCMIsBigEndianKey;
FOUNDATION_EXPORT NSString* const AVLinearPCMIsFloatKey;
FOUNDATION_EXPORT NSString* const AVLinearPCMIsNonInterleaved;

// avaudioquality
typedef CF_ENUM(NSInteger, AVAudioQuality) { AVAudioQualityHigh = 0x60 };

API_AVAILABLE(macos(10.10))
@interface AVAudioFormat : NSObject  // avaudioformat
- (nullable instancetype)initWithStreamDescription:(const AudioStreamBasicDescription*)description;
@property(nonatomic, readonly) const AudioStreamBasicDescription* streamDescription;
@property(nonatomic, readonly) double sampleRate;
@property(nonatomic, readonly) AVAudioChannelCount channelCount;
@property(nonatomic, readonly, getter=isInterleaved) BOOL interleaved;
@property(nonatomic, readonly) AVAudioCommonFormat commonFormat;
@end

API_AVAILABLE(macos(10.10))
@interface AVAudioBuffer : NSObject  // avaudiobuffer
@property(nonatomic, readonly) AVAudioFormat* format;
@property(nonatomic, readonly) AudioBufferList* mutableAudioBufferList;
@end

API_AVAILABLE(macos(10.10))
@interface AVAudioPCMBuffer : AVAudioBuffer  // avaudiopcmbuffer
- (nullable instancetype)initWithPCMFormat:(AVAudioFormat*)format
                             frameCapacity:(AVAudioFrameCount)frameCapacity;
@property(nonatomic, readonly) AVAudioFrameCount frameCapacity;
@property(nonatomic) AVAudioFrameCount frameLength;
@end

// avaudiofile. No `close` before macOS 15: the last reference closes.
API_AVAILABLE(macos(10.10))
@interface AVAudioFile : NSObject
- (nullable instancetype)initForWriting:(NSURL*)url
                               settings:(NSDictionary<NSString*, id>*)settings
                           commonFormat:(AVAudioCommonFormat)format
                            interleaved:(BOOL)interleaved
                                  error:(NSError* _Nullable* _Nullable)error;
- (BOOL)writeFromBuffer:(const AVAudioPCMBuffer*)buffer error:(NSError* _Nullable* _Nullable)error;
- (void)close API_AVAILABLE(macos(15.0));
@end

#pragma clang assume_nonnull end
