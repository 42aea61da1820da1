#include "platform/macos/AudioHardware.h"

#include <array>
#include <string_view>

/// The interface's keys of dictionaries, as they are before the framework makes macros of their
/// names.
static constexpr std::array<std::string_view, 9> interfaceKeys = {
    CA::kAudioAggregateDeviceNameKey,          CA::kAudioAggregateDeviceUIDKey,
    CA::kAudioAggregateDeviceMainSubDeviceKey, CA::kAudioAggregateDeviceIsPrivateKey,
    CA::kAudioAggregateDeviceIsStackedKey,     CA::kAudioAggregateDeviceTapAutoStartKey,
    CA::kAudioAggregateDeviceTapListKey,       CA::kAudioSubTapUIDKey,
    CA::kAudioSubTapDriftCompensationKey};

#import <CoreAudio/CATapDescription.h>
#import <CoreAudio/CoreAudio.h>
#import <Foundation/Foundation.h>

// Nobody here has seen whether it says itself that its functions are C's. It comes after whatever
// it imports, which does not belong in here.
extern "C" {
#import <CoreAudio/AudioHardwareTapping.h>
}

#include <memory>

#include "platform/macos/AudioLayout.h"
#include "platform/macos/CycleGate.h"
#include "platform/macos/Text.h"

/// What the system gets as client data.
struct CA::InstalledIOProc {
  InstalledIOProc(CA::AudioDeviceIOProc called, void* with) : procedure(called), clientData(with) {}

  CA::AudioDeviceIOProc procedure;
  void* clientData;
  ::AudioDeviceIOProcID systemID = nullptr;
  audrel::macos::CycleGate gate;
  InstalledIOProc* previous = nullptr;  // of all that were kept
};

namespace audrel::macos {
namespace {

static_assert(interfaceKeys ==
              std::array<std::string_view, 9>{
                  kAudioAggregateDeviceNameKey, kAudioAggregateDeviceUIDKey,
                  kAudioAggregateDeviceMainSubDeviceKey, kAudioAggregateDeviceIsPrivateKey,
                  kAudioAggregateDeviceIsStackedKey, kAudioAggregateDeviceTapAutoStartKey,
                  kAudioAggregateDeviceTapListKey, kAudioSubTapUIDKey,
                  kAudioSubTapDriftCompensationKey});

const ::AudioObjectPropertyAddress* systemAddress(const CA::AudioObjectPropertyAddress& address) {
  return reinterpret_cast<const ::AudioObjectPropertyAddress*>(&address);
}

::OSStatus ioProcThunk(::AudioObjectID device, const ::AudioTimeStamp* now,
                       const ::AudioBufferList* inputData, const ::AudioTimeStamp* inputTime,
                       ::AudioBufferList* outputData, const ::AudioTimeStamp* outputTime,
                       void* clientData) noexcept {
  auto& installed = *static_cast<CA::InstalledIOProc*>(clientData);
  if (!installed.gate.enter()) {
    return kAudioHardwareNoError;
  }
  try {
    installed.procedure(device, reinterpret_cast<const CA::AudioTimeStamp*>(now),
                        reinterpret_cast<const CA::AudioBufferList*>(inputData),
                        reinterpret_cast<const CA::AudioTimeStamp*>(inputTime),
                        reinterpret_cast<CA::AudioBufferList*>(outputData),
                        reinterpret_cast<const CA::AudioTimeStamp*>(outputTime),
                        installed.clientData);
  } catch (...) {
    // No line of the log on this thread, and no answer: the system has no use for one.
  }
  installed.gate.leave();
  return kAudioHardwareNoError;
}

static_assert(sizeof(CA::InstalledIOProc) == AudioHardware::bytesKeptForEachIOProc);

/// The last of those that are never freed, since a late cycle may still ask them.
CA::InstalledIOProc* lastKept = nullptr;

CA::InstalledIOProc* keep(std::unique_ptr<CA::InstalledIOProc> installed) {
  installed->previous = lastKept;
  lastKept = installed.release();
  return lastKept;
}

CATapDescription* systemDescription(const CA::TapDescription& description) {
  NSMutableArray<NSNumber*>* processes = [NSMutableArray array];
  for (const CA::AudioObjectID process : description.processes) {
    [processes addObject:[NSNumber numberWithUnsignedInt:process]];
  }
  CATapDescription* tap = nil;
  switch (description.kind) {
    case CA::TapDescription::Kind::stereoGlobalTapButExcludeProcesses:
      tap = [[CATapDescription alloc] initStereoGlobalTapButExcludeProcesses:processes];
      break;
    case CA::TapDescription::Kind::stereoMixdownOfProcesses:
      tap = [[CATapDescription alloc] initStereoMixdownOfProcesses:processes];
      break;
  }
  if (description.muteBehavior) {
    tap.muteBehavior = static_cast<CATapMuteBehavior>(*description.muteBehavior);
  }
  if (description.name) {
    tap.name = nsString(*description.name);
  }
  return tap;
}

NSDictionary<NSString*, id>* systemDictionary(const CA::Description& description);

struct SystemValue {
  id operator()(const std::string& value) const { return nsString(value); }
  id operator()(bool value) const { return [NSNumber numberWithBool:value]; }
  id operator()(const std::vector<CA::Description>& values) const {
    NSMutableArray<NSDictionary*>* array = [NSMutableArray array];
    for (const CA::Description& value : values) {
      [array addObject:systemDictionary(value)];
    }
    return array;
  }
};

NSDictionary<NSString*, id>* systemDictionary(const CA::Description& description) {
  NSMutableDictionary<NSString*, id>* dictionary = [NSMutableDictionary dictionary];
  for (const auto& [key, value] : description.entries) {
    dictionary[nsString(key)] = std::visit(SystemValue{}, value);
  }
  return dictionary;
}

}  // namespace

CA::OSStatus AudioHardware::AudioHardwareCreateProcessTap(const CA::TapDescription& description,
                                                          CA::AudioObjectID* outTapID) {
  @autoreleasepool {
    return ::AudioHardwareCreateProcessTap(systemDescription(description), outTapID);
  }
}

CA::OSStatus AudioHardware::AudioHardwareDestroyProcessTap(CA::AudioObjectID tapID) {
  @autoreleasepool {
    return ::AudioHardwareDestroyProcessTap(tapID);
  }
}

CA::OSStatus AudioHardware::AudioHardwareCreateAggregateDevice(const CA::Description& description,
                                                               CA::AudioObjectID* outDeviceID) {
  @autoreleasepool {
    NSDictionary* dictionary = systemDictionary(description);
    return ::AudioHardwareCreateAggregateDevice((__bridge CFDictionaryRef)dictionary, outDeviceID);
  }
}

CA::OSStatus AudioHardware::AudioHardwareDestroyAggregateDevice(CA::AudioObjectID deviceID) {
  @autoreleasepool {
    return ::AudioHardwareDestroyAggregateDevice(deviceID);
  }
}

CA::OSStatus AudioHardware::AudioDeviceCreateIOProcID(CA::AudioObjectID device,
                                                      CA::AudioDeviceIOProc procedure,
                                                      void* clientData,
                                                      CA::AudioDeviceIOProcID* outIOProcID) {
  @autoreleasepool {
    auto installed = std::make_unique<CA::InstalledIOProc>(procedure, clientData);
    const ::OSStatus status =
        ::AudioDeviceCreateIOProcID(device, ioProcThunk, installed.get(), &installed->systemID);
    if (status == kAudioHardwareNoError && installed->systemID != nullptr) {
      *outIOProcID = keep(std::move(installed));
    }
    return status;
  }
}

CA::OSStatus AudioHardware::AudioDeviceDestroyIOProcID(CA::AudioObjectID device,
                                                       CA::AudioDeviceIOProcID ioProcID) {
  @autoreleasepool {
    const ::OSStatus status = ::AudioDeviceDestroyIOProcID(device, ioProcID->systemID);
    ioProcID->gate.close();
    return status;
  }
}

CA::OSStatus AudioHardware::AudioDeviceStart(CA::AudioObjectID device,
                                             CA::AudioDeviceIOProcID ioProcID) {
  @autoreleasepool {
    ioProcID->gate.open();
    const ::OSStatus status = ::AudioDeviceStart(device, ioProcID->systemID);
    if (status != kAudioHardwareNoError) {
      ioProcID->gate.close();
    }
    return status;
  }
}

CA::OSStatus AudioHardware::AudioDeviceStop(CA::AudioObjectID device,
                                            CA::AudioDeviceIOProcID ioProcID) {
  @autoreleasepool {
    const ::OSStatus status = ::AudioDeviceStop(device, ioProcID->systemID);
    // Not before: what plays until the system has stopped belongs to the recording.
    ioProcID->gate.close();
    return status;
  }
}

CA::OSStatus AudioHardware::AudioObjectGetPropertyDataSize(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t qualifierDataSize, const void* qualifierData, std::uint32_t* outDataSize) {
  @autoreleasepool {
    return ::AudioObjectGetPropertyDataSize(object, systemAddress(address), qualifierDataSize,
                                            qualifierData, outDataSize);
  }
}

CA::OSStatus AudioHardware::AudioObjectGetPropertyData(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t qualifierDataSize, const void* qualifierData, std::uint32_t* ioDataSize,
    void* outData) {
  @autoreleasepool {
    return ::AudioObjectGetPropertyData(object, systemAddress(address), qualifierDataSize,
                                        qualifierData, ioDataSize, outData);
  }
}

CA::OSStatus AudioHardware::AudioObjectGetPropertyData(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t qualifierDataSize, const void* qualifierData, std::uint32_t* ioDataSize,
    std::string* outText) {
  @autoreleasepool {
    CFStringRef reference = nullptr;
    const ::OSStatus status = ::AudioObjectGetPropertyData(
        object, systemAddress(address), qualifierDataSize, qualifierData, ioDataSize, &reference);
    if (status == kAudioHardwareNoError) {
      // The reference is the caller's: this gives it back, once.
      NSString* text = CFBridgingRelease(reference);
      *outText = utf8(text);
    }
    return status;
  }
}

}  // namespace audrel::macos
