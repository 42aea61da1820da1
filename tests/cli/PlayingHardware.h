#pragma once

#include <cstdint>
#include <stop_token>
#include <string>
#include <thread>

#include "platform/CoreAudio.h"

namespace audrel::cli {

/// Another hardware layer, whose devices deliver stereo of one constant sample on a thread of
/// their own while they run: 512 frames a millisecond. One IO procedure at a time.
class PlayingHardware final : public CA::AudioHardware {
 public:
  PlayingHardware(CA::AudioHardware& hardware, float sample);
  PlayingHardware(const PlayingHardware&) = delete;
  PlayingHardware& operator=(const PlayingHardware&) = delete;
  ~PlayingHardware() override;

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
  void play(const std::stop_token& stop) const;

  CA::AudioHardware& hardware_;
  const float sample_;
  CA::AudioDeviceIOProc procedure_ = nullptr;
  void* clientData_ = nullptr;
  std::thread player_;
  std::stop_source stop_;
};

}  // namespace audrel::cli
