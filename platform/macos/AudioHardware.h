#pragma once

#include <memory>
#include <vector>

#include "platform/CoreAudio.h"

namespace audrel::macos {

/// Core Audio's hardware layer. An IO procedure is called through a thunk, because a function may
/// only be called as what it was declared; what the thunk needs lives until Core Audio has let go
/// of the procedure.
class AudioHardware final : public CA::AudioHardware {
 public:
  AudioHardware();
  ~AudioHardware() override;
  AudioHardware(const AudioHardware&) = delete;
  AudioHardware& operator=(const AudioHardware&) = delete;

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

 private:
  std::vector<std::unique_ptr<CA::InstalledIOProc>> ioProcs_;
};

}  // namespace audrel::macos
