#pragma once

// Pages are below https://developer.apple.com/documentation/coreaudio/
#include <CoreAudioTypes/CoreAudioTypes.h>

#pragma clang assume_nonnull begin

typedef UInt32 AudioObjectID;                // audioobjectid
typedef UInt32 AudioObjectPropertySelector;  // audioobjectpropertyselector
typedef UInt32 AudioObjectPropertyScope;     // audioobjectpropertyscope
typedef UInt32 AudioObjectPropertyElement;   // audioobjectpropertyelement

struct AudioObjectPropertyAddress {  // audioobjectpropertyaddress
  AudioObjectPropertySelector mSelector;
  AudioObjectPropertyScope mScope;
  AudioObjectPropertyElement mElement;
};

enum : OSStatus {
  kAudioHardwareNoError = 0,
  kAudioHardwareNotRunningError = 'stop',
  kAudioHardwareUnspecifiedError = 'what',
  kAudioHardwareUnknownPropertyError = 'who?',
  kAudioHardwareBadPropertySizeError = '!siz',
  kAudioHardwareIllegalOperationError = 'nope',
  kAudioHardwareBadObjectError = '!obj',
  kAudioHardwareBadDeviceError = '!dev',
};
enum : AudioObjectID {
  kAudioObjectUnknown = 0,
  kAudioObjectSystemObject = 1,
};
enum : AudioObjectPropertyScope { kAudioObjectPropertyScopeGlobal = 'glob' };
enum : AudioObjectPropertyElement { kAudioObjectPropertyElementMain = 0 };
enum : AudioObjectPropertySelector {
  kAudioHardwarePropertyProcessObjectList = 'prs#',
  kAudioHardwarePropertyDefaultOutputDevice = 'dOut',
  kAudioDevicePropertyDeviceUID = 'uid ',
  kAudioProcessPropertyPID = 'ppid',
  kAudioProcessPropertyBundleID = 'pbid',
  kAudioTapPropertyUID = 'tuid',
  kAudioTapPropertyFormat = 'tfmt',
};

// C strings, not CFStrings: kaudioaggregatedevicenamekey and so on
#define kAudioAggregateDeviceUIDKey "uid"
#define kAudioAggregateDeviceNameKey "name"
#define kAudioAggregateDeviceMainSubDeviceKey "master"
#define kAudioAggregateDeviceIsPrivateKey "private"
#define kAudioAggregateDeviceIsStackedKey "stacked"
#define kAudioAggregateDeviceTapListKey "taps"
#define kAudioAggregateDeviceTapAutoStartKey "tapautostart"
#define kAudioSubTapUIDKey "uid"
#define kAudioSubTapDriftCompensationKey "drift"

// audiodeviceioproc
typedef OSStatus (*AudioDeviceIOProc)(AudioObjectID inDevice, const AudioTimeStamp* inNow,
                                      const AudioBufferList* inInputData,
                                      const AudioTimeStamp* inInputTime,
                                      AudioBufferList* outOutputData,
                                      const AudioTimeStamp* inOutputTime,
                                      void* _Nullable inClientData);
typedef AudioDeviceIOProc AudioDeviceIOProcID;  // audiodeviceioprocid

// audioobjectgetpropertydatasize(_:_:_:_:_:)
CF_EXPORT OSStatus AudioObjectGetPropertyDataSize(AudioObjectID inObjectID,
                                                  const AudioObjectPropertyAddress* inAddress,
                                                  UInt32 inQualifierDataSize,
                                                  const void* _Nullable inQualifierData,
                                                  UInt32* outDataSize) API_AVAILABLE(macos(10.4));

// audioobjectgetpropertydata(_:_:_:_:_:_:)
CF_EXPORT OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID,
                                              const AudioObjectPropertyAddress* inAddress,
                                              UInt32 inQualifierDataSize,
                                              const void* _Nullable inQualifierData,
                                              UInt32* ioDataSize, void* outData)
    API_AVAILABLE(macos(10.4));

// audiohardwarecreateaggregatedevice(_:_:)
CF_EXPORT OSStatus AudioHardwareCreateAggregateDevice(CFDictionaryRef inDescription,
                                                      AudioObjectID* outDeviceID)
    API_AVAILABLE(macos(10.9));

// audiohardwaredestroyaggregatedevice(_:)
CF_EXPORT OSStatus AudioHardwareDestroyAggregateDevice(AudioObjectID inDeviceID)
    API_AVAILABLE(macos(10.9));

// audiodevicecreateioprocid(_:_:_:_:)
CF_EXPORT OSStatus AudioDeviceCreateIOProcID(AudioObjectID inDevice, AudioDeviceIOProc inProc,
                                             void* _Nullable inClientData,
                                             AudioDeviceIOProcID _Nullable* _Nonnull outIOProcID)
    API_AVAILABLE(macos(10.5));

// audiodevicedestroyioprocid(_:_:)
CF_EXPORT OSStatus AudioDeviceDestroyIOProcID(AudioObjectID inDevice,
                                              AudioDeviceIOProcID inIOProcID)
    API_AVAILABLE(macos(10.5));

// audiodevicestart(_:_:)
CF_EXPORT OSStatus AudioDeviceStart(AudioObjectID inDevice, AudioDeviceIOProcID _Nullable inProcID)
    API_AVAILABLE(macos(10.0));

// audiodevicestop(_:_:)
CF_EXPORT OSStatus AudioDeviceStop(AudioObjectID inDevice, AudioDeviceIOProcID _Nullable inProcID)
    API_AVAILABLE(macos(10.0));

#pragma clang assume_nonnull end
