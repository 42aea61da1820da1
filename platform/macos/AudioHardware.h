#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/CoreAudio.h"

namespace audrel::macos {

/// Core Audio's hardware layer. An IO procedure is called through a thunk, because a function may
/// only be called as what it was declared, and because the system may call late: what the thunk
/// needs to see that it is too late is never freed. The thunk answers 0 always.
class AudioHardware final : public CA::AudioHardware {
 public:
  /// For the process's life, so that 100 recordings a day keep 1.8 MB in a year.
  static constexpr std::size_t bytesKeptForEachIOProc = 48;

  CA::OSStatus AudioHardwareCreateProcessTap(const CA::TapDescription& description,
                                             CA::AudioObjectID* outTapID) override;
  CA::OSStatus AudioHardwareDestroyProcessTap(CA::AudioObjectID tapID) override;
  CA::OSStatus AudioHardwareCreateAggregateDevice(const CA::Description& description,
                                                  CA::AudioObjectID* outDeviceID) override;
  CA::OSStatus AudioHardwareDestroyAggregateDevice(CA::AudioObjectID deviceID) override;
  CA::OSStatus AudioDeviceCreateIOProcID(CA::AudioObjectID device, CA::AudioDeviceIOProc procedure,
                                         void* clientData,
                                         CA::AudioDeviceIOProcID* outIOProcID) override;
  CA::OSStatus AudioDeviceDestroyIOProcID(CA::AudioObjectID device,
                                          CA::AudioDeviceIOProcID ioProcID) override;
  CA::OSStatus AudioDeviceStart(CA::AudioObjectID device,
                                CA::AudioDeviceIOProcID ioProcID) override;
  CA::OSStatus AudioDeviceStop(CA::AudioObjectID device, CA::AudioDeviceIOProcID ioProcID) override;
  CA::OSStatus AudioObjectGetPropertyDataSize(CA::AudioObjectID object,
                                              const CA::AudioObjectPropertyAddress& address,
                                              std::uint32_t qualifierDataSize,
                                              const void* qualifierData,
                                              std::uint32_t* outDataSize) override;
  CA::OSStatus AudioObjectGetPropertyData(CA::AudioObjectID object,
                                          const CA::AudioObjectPropertyAddress& address,
                                          std::uint32_t qualifierDataSize,
                                          const void* qualifierData, std::uint32_t* ioDataSize,
                                          void* outData) override;
  CA::OSStatus AudioObjectGetPropertyData(CA::AudioObjectID object,
                                          const CA::AudioObjectPropertyAddress& address,
                                          std::uint32_t qualifierDataSize,
                                          const void* qualifierData, std::uint32_t* ioDataSize,
                                          std::string* outText) override;
};

}  // namespace audrel::macos
