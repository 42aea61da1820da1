#pragma once

// Before the framework, whose keys are macros of the same names.
#include "platform/CoreAudio.h"

#import <CoreAudio/CoreAudio.h>

#include <cstddef>
#include <type_traits>

/// The interface's value types are handed to Core Audio, and taken from it, by pointer: each must
/// lie in memory as the system's own does.
namespace audrel::macos {

template <typename Ours, typename Theirs>
inline constexpr bool areAlike =
    sizeof(Ours) == sizeof(Theirs) && alignof(Ours) == alignof(Theirs) &&
    std::conjunction_v<std::is_standard_layout<Ours>, std::is_trivially_copyable<Ours>>;

#define AUDREL_SAME_FIELD(type, field)                                 \
  static_assert(offsetof(CA::type, field) == offsetof(::type, field)); \
  static_assert(areAlike<decltype(CA::type::field), decltype(::type::field)>)

static_assert(std::is_same_v<CA::AudioObjectID, ::AudioObjectID>);
static_assert(std::is_same_v<CA::OSStatus, ::OSStatus>);

static_assert(areAlike<CA::AudioObjectPropertyAddress, ::AudioObjectPropertyAddress>);
AUDREL_SAME_FIELD(AudioObjectPropertyAddress, mSelector);
AUDREL_SAME_FIELD(AudioObjectPropertyAddress, mScope);
AUDREL_SAME_FIELD(AudioObjectPropertyAddress, mElement);

static_assert(areAlike<CA::AudioStreamBasicDescription, ::AudioStreamBasicDescription>);
AUDREL_SAME_FIELD(AudioStreamBasicDescription, mSampleRate);
AUDREL_SAME_FIELD(AudioStreamBasicDescription, mFormatID);
AUDREL_SAME_FIELD(AudioStreamBasicDescription, mFormatFlags);
AUDREL_SAME_FIELD(AudioStreamBasicDescription, mBytesPerPacket);
AUDREL_SAME_FIELD(AudioStreamBasicDescription, mFramesPerPacket);
AUDREL_SAME_FIELD(AudioStreamBasicDescription, mBytesPerFrame);
AUDREL_SAME_FIELD(AudioStreamBasicDescription, mChannelsPerFrame);
AUDREL_SAME_FIELD(AudioStreamBasicDescription, mBitsPerChannel);
AUDREL_SAME_FIELD(AudioStreamBasicDescription, mReserved);

static_assert(areAlike<CA::AudioBuffer, ::AudioBuffer>);
AUDREL_SAME_FIELD(AudioBuffer, mNumberChannels);
AUDREL_SAME_FIELD(AudioBuffer, mDataByteSize);
AUDREL_SAME_FIELD(AudioBuffer, mData);

static_assert(areAlike<CA::AudioBufferList, ::AudioBufferList>);
AUDREL_SAME_FIELD(AudioBufferList, mNumberBuffers);
AUDREL_SAME_FIELD(AudioBufferList, mBuffers);

static_assert(areAlike<CA::SMPTETime, ::SMPTETime>);
AUDREL_SAME_FIELD(SMPTETime, mSubframes);
AUDREL_SAME_FIELD(SMPTETime, mSubframeDivisor);
AUDREL_SAME_FIELD(SMPTETime, mCounter);
AUDREL_SAME_FIELD(SMPTETime, mType);
AUDREL_SAME_FIELD(SMPTETime, mFlags);
AUDREL_SAME_FIELD(SMPTETime, mHours);
AUDREL_SAME_FIELD(SMPTETime, mMinutes);
AUDREL_SAME_FIELD(SMPTETime, mSeconds);
AUDREL_SAME_FIELD(SMPTETime, mFrames);

static_assert(areAlike<CA::AudioTimeStamp, ::AudioTimeStamp>);
AUDREL_SAME_FIELD(AudioTimeStamp, mSampleTime);
AUDREL_SAME_FIELD(AudioTimeStamp, mHostTime);
AUDREL_SAME_FIELD(AudioTimeStamp, mRateScalar);
AUDREL_SAME_FIELD(AudioTimeStamp, mWordClockTime);
AUDREL_SAME_FIELD(AudioTimeStamp, mSMPTETime);
AUDREL_SAME_FIELD(AudioTimeStamp, mFlags);
AUDREL_SAME_FIELD(AudioTimeStamp, mReserved);

#undef AUDREL_SAME_FIELD

#define AUDREL_SAME_CONSTANT(name) static_assert(CA::name == ::name)

AUDREL_SAME_CONSTANT(kAudioHardwareNoError);
AUDREL_SAME_CONSTANT(kAudioHardwareNotRunningError);
AUDREL_SAME_CONSTANT(kAudioHardwareUnspecifiedError);
AUDREL_SAME_CONSTANT(kAudioHardwareUnknownPropertyError);
AUDREL_SAME_CONSTANT(kAudioHardwareBadPropertySizeError);
AUDREL_SAME_CONSTANT(kAudioHardwareIllegalOperationError);
AUDREL_SAME_CONSTANT(kAudioHardwareBadObjectError);
AUDREL_SAME_CONSTANT(kAudioHardwareBadDeviceError);
AUDREL_SAME_CONSTANT(kAudioObjectUnknown);
AUDREL_SAME_CONSTANT(kAudioObjectSystemObject);
AUDREL_SAME_CONSTANT(kAudioObjectPropertyScopeGlobal);
AUDREL_SAME_CONSTANT(kAudioObjectPropertyElementMain);
AUDREL_SAME_CONSTANT(kAudioHardwarePropertyProcessObjectList);
AUDREL_SAME_CONSTANT(kAudioHardwarePropertyDefaultOutputDevice);
AUDREL_SAME_CONSTANT(kAudioDevicePropertyDeviceUID);
AUDREL_SAME_CONSTANT(kAudioProcessPropertyPID);
AUDREL_SAME_CONSTANT(kAudioProcessPropertyBundleID);
AUDREL_SAME_CONSTANT(kAudioTapPropertyUID);
AUDREL_SAME_CONSTANT(kAudioTapPropertyFormat);
AUDREL_SAME_CONSTANT(kAudioFormatLinearPCM);
AUDREL_SAME_CONSTANT(kAudioFormatMPEG4AAC);
AUDREL_SAME_CONSTANT(kAudioFormatFlagIsFloat);
AUDREL_SAME_CONSTANT(kAudioFormatFlagIsSignedInteger);
AUDREL_SAME_CONSTANT(kAudioFormatFlagIsPacked);
AUDREL_SAME_CONSTANT(kAudioFormatFlagIsNonInterleaved);

#undef AUDREL_SAME_CONSTANT

}  // namespace audrel::macos
