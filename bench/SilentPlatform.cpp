#include "bench/SilentPlatform.h"

#include <cstring>

namespace audrel::bench {

namespace {

constexpr CA::AudioObjectID someObject = 2;

class SilentLogger final : public os::Logger {
  void log(os::LogLevel, std::string_view) noexcept override {}
};

class SwallowingFile final : public AV::AudioFile {
  std::optional<NS::Error> write(AV::PCMBuffer&) override { return std::nullopt; }
};

constexpr CA::AudioStreamBasicDescription stereo = {
    .mSampleRate = 48000,
    .mFormatID = CA::kAudioFormatLinearPCM,
    .mFormatFlags = CA::kAudioFormatFlagIsFloat | CA::kAudioFormatFlagIsPacked,
    .mBytesPerPacket = 8,
    .mFramesPerPacket = 1,
    .mBytesPerFrame = 8,
    .mChannelsPerFrame = 2,
    .mBitsPerChannel = 32,
    .mReserved = 0};

}  // namespace

Platform SilentPlatform::interfaces() {
  return {.audioHardware = *this,
          .audioFramework = *this,
          .captureAccess = *this,
          .clock = clock_,
          .collation = collation_,
          .fileManager = fileManager_,
          .runningApplications = *this,
          .uuids = uuids_,
          .dispatch = dispatch_,
          .log = *this,
          .diagnostics = *this};
}

CA::OSStatus SilentPlatform::AudioHardwareCreateProcessTap(const CA::TapDescription&,
                                                           CA::AudioObjectID* outTapID) {
  *outTapID = someObject;
  return CA::kAudioHardwareNoError;
}

CA::OSStatus SilentPlatform::AudioHardwareCreateAggregateDevice(const CA::Description&,
                                                                CA::AudioObjectID* outDeviceID) {
  *outDeviceID = someObject;
  return CA::kAudioHardwareNoError;
}

CA::OSStatus SilentPlatform::AudioDeviceCreateIOProcID(CA::AudioObjectID, CA::AudioDeviceIOProc,
                                                       void* clientData,
                                                       CA::AudioDeviceIOProcID* outIOProcID) {
  *outIOProcID = static_cast<CA::AudioDeviceIOProcID>(clientData);
  return CA::kAudioHardwareNoError;
}

CA::OSStatus SilentPlatform::AudioObjectGetPropertyData(
    CA::AudioObjectID, const CA::AudioObjectPropertyAddress& address, std::uint32_t, const void*,
    std::uint32_t*, void* outData) {
  if (address.mSelector == CA::kAudioTapPropertyFormat) {
    std::memcpy(outData, &stereo, sizeof stereo);
  } else {
    std::memcpy(outData, &someObject, sizeof someObject);
  }
  return CA::kAudioHardwareNoError;
}

std::shared_ptr<AV::AudioFile> SilentPlatform::openForWriting(const std::filesystem::path&,
                                                              const AV::Settings&,
                                                              AV::AudioCommonFormat, bool,
                                                              NS::Error*) {
  return std::make_shared<SwallowingFile>();
}

std::shared_ptr<os::Logger> SilentPlatform::makeLogger(const std::string&, const std::string&) {
  return std::make_shared<SilentLogger>();
}

}  // namespace audrel::bench
