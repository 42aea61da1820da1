#pragma once

// Pages are below https://developer.apple.com/documentation/coreaudiotypes/
#include <CoreFoundation/CoreFoundation.h>

typedef UInt32 AudioFormatID;     // audioformatid
typedef UInt32 AudioFormatFlags;  // audioformatflags

enum : AudioFormatID {
  kAudioFormatLinearPCM = 'lpcm',
  kAudioFormatMPEG4AAC = 'aac ',
};
enum : AudioFormatFlags {
  kAudioFormatFlagIsFloat = 1U << 0,
  kAudioFormatFlagIsSignedInteger = 1U << 2,
  kAudioFormatFlagIsPacked = 1U << 3,
  kAudioFormatFlagIsNonInterleaved = 1U << 5,
};

struct AudioStreamBasicDescription {  // audiostreambasicdescription
  Float64 mSampleRate;
  AudioFormatID mFormatID;
  AudioFormatFlags mFormatFlags;
  UInt32 mBytesPerPacket;
  UInt32 mFramesPerPacket;
  UInt32 mBytesPerFrame;
  UInt32 mChannelsPerFrame;
  UInt32 mBitsPerChannel;
  UInt32 mReserved;
};

struct AudioBuffer {  // audiobuffer
  UInt32 mNumberChannels;
  UInt32 mDataByteSize;
  void* _Nullable mData;
};

struct AudioBufferList {  // audiobufferlist
  UInt32 mNumberBuffers;
  AudioBuffer mBuffers[1];
};

struct SMPTETime {  // smptetime
  SInt16 mSubframes;
  SInt16 mSubframeDivisor;
  UInt32 mCounter;
  UInt32 mType;
  UInt32 mFlags;
  SInt16 mHours;
  SInt16 mMinutes;
  SInt16 mSeconds;
  SInt16 mFrames;
};

struct AudioTimeStamp {  // audiotimestamp
  Float64 mSampleTime;
  UInt64 mHostTime;
  Float64 mRateScalar;
  UInt64 mWordClockTime;
  SMPTETime mSMPTETime;
  UInt32 mFlags;
  UInt32 mReserved;
};
