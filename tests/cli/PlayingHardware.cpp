#include "tests/cli/PlayingHardware.h"

#include <array>
#include <chrono>
#include <cstddef>

namespace audrel::cli {

PlayingHardware::PlayingHardware(CA::AudioHardware& hardware, float sample)
    : hardware_(hardware), sample_(sample) {}

PlayingHardware::~PlayingHardware() {
  if (player_.joinable()) {
    stop_.request_stop();
    player_.join();
  }
}

void PlayingHardware::play(const std::stop_token& stop) const {
  constexpr std::size_t frames = 512;
  std::array<float, frames * 2> samples{};
  samples.fill(sample_);
  CA::AudioBufferList input{1, {{2, sizeof samples, samples.data()}}};
  const CA::AudioTimeStamp time{};
  while (!stop.stop_requested()) {
    procedure_(1, &time, &input, &time, nullptr, &time, clientData_);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

CA::OSStatus PlayingHardware::AudioDeviceCreateIOProcID(CA::AudioObjectID device,
                                                        CA::AudioDeviceIOProc procedure,
                                                        void* clientData,
                                                        CA::AudioDeviceIOProcID* outIOProcID) {
  procedure_ = procedure;
  clientData_ = clientData;
  return hardware_.AudioDeviceCreateIOProcID(device, procedure, clientData, outIOProcID);
}

CA::OSStatus PlayingHardware::AudioDeviceStart(CA::AudioObjectID device,
                                               CA::AudioDeviceIOProcID ioProcID) {
  const auto status = hardware_.AudioDeviceStart(device, ioProcID);
  if (status == CA::kAudioHardwareNoError) {
    stop_ = std::stop_source();
    player_ = std::thread([this, stop = stop_.get_token()] { play(stop); });
  }
  return status;
}

CA::OSStatus PlayingHardware::AudioDeviceStop(CA::AudioObjectID device,
                                              CA::AudioDeviceIOProcID ioProcID) {
  if (player_.joinable()) {
    stop_.request_stop();
    player_.join();
  }
  return hardware_.AudioDeviceStop(device, ioProcID);
}

CA::OSStatus PlayingHardware::AudioHardwareCreateProcessTap(const CA::TapDescription& description,
                                                            CA::AudioObjectID* outTapID) {
  return hardware_.AudioHardwareCreateProcessTap(description, outTapID);
}

CA::OSStatus PlayingHardware::AudioHardwareDestroyProcessTap(CA::AudioObjectID tapID) {
  return hardware_.AudioHardwareDestroyProcessTap(tapID);
}

CA::OSStatus PlayingHardware::AudioHardwareCreateAggregateDevice(const CA::Description& description,
                                                                 CA::AudioObjectID* outDeviceID) {
  return hardware_.AudioHardwareCreateAggregateDevice(description, outDeviceID);
}

CA::OSStatus PlayingHardware::AudioHardwareDestroyAggregateDevice(CA::AudioObjectID deviceID) {
  return hardware_.AudioHardwareDestroyAggregateDevice(deviceID);
}

CA::OSStatus PlayingHardware::AudioDeviceDestroyIOProcID(CA::AudioObjectID device,
                                                         CA::AudioDeviceIOProcID ioProcID) {
  return hardware_.AudioDeviceDestroyIOProcID(device, ioProcID);
}

CA::OSStatus PlayingHardware::AudioObjectGetPropertyDataSize(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t qualifierDataSize, const void* qualifierData, std::uint32_t* outDataSize) {
  return hardware_.AudioObjectGetPropertyDataSize(object, address, qualifierDataSize, qualifierData,
                                                  outDataSize);
}

CA::OSStatus PlayingHardware::AudioObjectGetPropertyData(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t qualifierDataSize, const void* qualifierData, std::uint32_t* ioDataSize,
    void* outData) {
  return hardware_.AudioObjectGetPropertyData(object, address, qualifierDataSize, qualifierData,
                                              ioDataSize, outData);
}

CA::OSStatus PlayingHardware::AudioObjectGetPropertyData(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t qualifierDataSize, const void* qualifierData, std::uint32_t* ioDataSize,
    std::string* outText) {
  return hardware_.AudioObjectGetPropertyData(object, address, qualifierDataSize, qualifierData,
                                              ioDataSize, outText);
}

}  // namespace audrel::cli
