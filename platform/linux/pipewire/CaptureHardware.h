#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/AppKit.h"
#include "platform/CoreAudio.h"
#include "platform/Diagnostics.h"
#include "platform/Foundation.h"
#include "platform/Log.h"
#include "platform/linux/pipewire/CaptureTime.h"
#include "platform/linux/pipewire/Connection.h"
#include "platform/linux/pipewire/DeviceTable.h"
#include "platform/linux/pipewire/ProcessTable.h"
#include "platform/linux/pipewire/TapDevice.h"

namespace audrel::linuxos {

/// Core Audio's hardware layer on a PipeWire server: processes that play are process objects, a
/// tap is what to link to, an aggregate device with a running IO procedure is a capture stream.
class CaptureHardware final : public CA::AudioHardware,
                              public capture::Diagnostics,
                              public NS::RunningApplications,
                              private Connection::Observer {
 public:
  /// The only observer of the connection. Its devices go by `time`.
  CaptureHardware(Connection& connection, CaptureTime& time, os::Log& log, NS::UUIDFactory& uuids);
  ~CaptureHardware() override;
  CaptureHardware(const CaptureHardware&) = delete;
  CaptureHardware& operator=(const CaptureHardware&) = delete;

  /// `observer` is called when a device has started or stopped, with the number of those that run:
  /// on the thread of the call that did it, without a lock of ours.
  void setRunObserver(std::function<void(std::size_t running)> observer);

  /// From now on the user is told by `taker` of what is lost of a running recording; null: by
  /// nobody.
  void setNoticeTaker(NoticeTaker taker);

  /// Why nobody answered who was asked last, with the remedy; empty while somebody does.
  std::string whyNoServer() const;

  /// Whether a device runs, started and not yet stopped.
  bool isRunning() const;

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

  std::optional<std::string> diagnosis() override;
  std::uint64_t lostFrames() override;
  std::optional<capture::Playback> playback(CA::AudioObjectID process) override;
  bool hasQuit(CA::AudioObjectID process) override;

  std::optional<NS::RunningApplication> runningApplication(pid_t processIdentifier) override;

 private:
  struct Tap {
    CA::TapDescription description;
    std::string uid;
    double rate = 0;  ///< of the graph when the tap was made; it stays the tap's
  };

  void graphChanged() override;
  void serverLost() override;

  CA::OSStatus fail(CA::OSStatus status, std::string diagnosis);
  CA::OSStatus requireServer();
  void learnProcesses();
  void forgetGoneProcesses();
  CA::OSStatus checkTapped(const std::vector<CA::AudioObjectID>& processes);
  TappedPorts tappedPorts(const Tap& tap, std::uint32_t nodeId);
  TapSource sourceOf(const Tap& tap);
  CA::AudioObjectID objectOfSink(const GraphNode& sink);
  CA::OSStatus systemData(std::uint32_t selector, std::vector<CA::AudioObjectID>* outObjects);
  CA::OSStatus start(CA::AudioObjectID device, CA::AudioDeviceIOProcID ioProcID);
  CA::OSStatus telling(const std::function<CA::OSStatus()>& change) const;

  Connection& connection_;
  CaptureTime& time_;
  std::shared_ptr<os::Logger> lossLog_;
  NS::UUIDFactory& uuids_;
  ProcessTable processes_;
  CA::AudioObjectID nextID_ = CA::kAudioObjectSystemObject + 1;
  std::map<CA::AudioObjectID, Tap> taps_;
  std::map<CA::AudioObjectID, std::string> sinkNames_;
  DeviceTable devices_{*lossLog_};
  std::function<void(std::size_t)> runObserver_;
  std::string diagnosis_;
};

}  // namespace audrel::linuxos
