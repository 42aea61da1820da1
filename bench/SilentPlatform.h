#pragma once

#include <memory>

#include "platform/AVFAudio.h"
#include "platform/AppKit.h"
#include "platform/CoreAudio.h"
#include "platform/CoreGraphics.h"
#include "platform/Diagnostics.h"
#include "platform/Foundation.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/linux/files/AudioFramework.h"
#include "platform/linux/system/Clock.h"
#include "platform/linux/system/Collation.h"
#include "platform/linux/system/Dispatch.h"
#include "platform/linux/system/FileManager.h"
#include "platform/linux/system/UUIDFactory.h"

namespace audrel::bench {

/// A platform on which every call succeeds, no audio comes of itself, and files swallow what is
/// written. Buffers and queues are Linux's real ones.
class SilentPlatform : private CA::AudioHardware,
                       private AV::AudioFramework,
                       private CG::CaptureAccess,
                       private NS::RunningApplications,
                       private os::Log,
                       private capture::Diagnostics {
 public:
  Platform interfaces();

 private:
  CA::OSStatus AudioHardwareCreateProcessTap(const CA::TapDescription&,
                                             CA::AudioObjectID* outTapID) override;
  CA::OSStatus AudioHardwareDestroyProcessTap(CA::AudioObjectID) override { return 0; }
  CA::OSStatus AudioHardwareCreateAggregateDevice(const CA::Description&,
                                                  CA::AudioObjectID* outDeviceID) override;
  CA::OSStatus AudioHardwareDestroyAggregateDevice(CA::AudioObjectID) override { return 0; }
  CA::OSStatus AudioDeviceCreateIOProcID(CA::AudioObjectID, CA::AudioDeviceIOProc, void*,
                                         CA::AudioDeviceIOProcID* outIOProcID) override;
  CA::OSStatus AudioDeviceDestroyIOProcID(CA::AudioObjectID, CA::AudioDeviceIOProcID) override {
    return 0;
  }
  CA::OSStatus AudioDeviceStart(CA::AudioObjectID, CA::AudioDeviceIOProcID) override { return 0; }
  CA::OSStatus AudioDeviceStop(CA::AudioObjectID, CA::AudioDeviceIOProcID) override { return 0; }
  CA::OSStatus AudioObjectGetPropertyDataSize(CA::AudioObjectID,
                                              const CA::AudioObjectPropertyAddress&, std::uint32_t,
                                              const void*, std::uint32_t*) override {
    return 0;
  }
  CA::OSStatus AudioObjectGetPropertyData(CA::AudioObjectID, const CA::AudioObjectPropertyAddress&,
                                          std::uint32_t, const void*, std::uint32_t*,
                                          void* outData) override;
  CA::OSStatus AudioObjectGetPropertyData(CA::AudioObjectID, const CA::AudioObjectPropertyAddress&,
                                          std::uint32_t, const void*, std::uint32_t*,
                                          std::string*) override {
    return 0;
  }

  std::shared_ptr<const AV::AudioFormat> makeFormat(
      const CA::AudioStreamBasicDescription& description) override {
    return audio_.makeFormat(description);
  }
  std::unique_ptr<AV::PCMBuffer> makePCMBuffer(const std::shared_ptr<const AV::AudioFormat>& format,
                                               std::uint32_t frameCapacity) noexcept override {
    return audio_.makePCMBuffer(format, frameCapacity);
  }
  std::shared_ptr<AV::AudioFile> openForWriting(const std::filesystem::path&, const AV::Settings&,
                                                AV::AudioCommonFormat, bool, NS::Error*) override;

  bool preflightScreenCaptureAccess() override { return true; }
  bool requestScreenCaptureAccess() override { return true; }
  std::optional<NS::RunningApplication> runningApplication(pid_t) override { return std::nullopt; }
  std::shared_ptr<os::Logger> makeLogger(const std::string&, const std::string&) override;
  std::optional<std::string> diagnosis() override { return std::nullopt; }
  std::uint64_t lostFrames() override { return 0; }

  linuxos::AudioFramework audio_{*this};
  linuxos::Clock clock_;
  linuxos::Collation collation_{"C"};
  linuxos::FileManager fileManager_;
  linuxos::UUIDFactory uuids_;
  linuxos::Dispatch dispatch_;
};

}  // namespace audrel::bench
