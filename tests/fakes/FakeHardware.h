#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/CoreAudio.h"
#include "tests/fakes/Journal.h"

namespace audrel::fakes {

/// A hardware layer that does what it is told and journals every call.
///
/// A call that was told to fail first scribbles on its results, since nobody may rely on those.
/// Object ids count up and never repeat: taps from 101, aggregate devices from 201.
class FakeHardware final : public CA::AudioHardware {
 public:
  /// The calls that can be told to fail. Property reads go by what they read.
  enum class Call {
    createProcessTap,
    destroyProcessTap,
    createAggregateDevice,
    destroyAggregateDevice,
    createIOProcID,
    destroyIOProcID,
    deviceStart,
    deviceStop,
    tapUID,
    tapFormat,
    defaultOutputDevice,
    deviceUID,
    processObjectListSize,
    processObjectList,
  };

  struct ProcessObject {
    CA::AudioObjectID id = CA::kAudioObjectUnknown;
    std::optional<pid_t> pid = 0;  ///< none: the query succeeds and writes nothing
    std::string bundleID;
    CA::OSStatus pidStatus = 0;       ///< of the query for the pid
    CA::OSStatus bundleIDStatus = 0;  ///< of the query for the bundle identifier
  };

  explicit FakeHardware(Journal& journal) : journal_(journal) {}

  /// From now on `call` fails with `status`.
  void fail(Call call, CA::OSStatus status) { failures_[call] = status; }

  /// From now on `call` succeeds and creates or finds nothing: it writes no result.
  void yieldNothing(Call call) { empty_.insert(call); }

  /// `call` works again, or all do.
  void restore(Call call);
  void restore();

  /// What a tap's format query answers: 48 kHz interleaved stereo of 32-bit floats.
  CA::AudioStreamBasicDescription tapFormat = floatStereo();
  CA::AudioObjectID defaultOutputDevice = 51;
  std::string outputDeviceUID = "fake-output";

  std::vector<ProcessObject> processObjects;
  /// What the size query of the process object list answers instead of the true size, in bytes.
  std::optional<std::uint32_t> processObjectListSize;

  /// Calls every running IO procedure once with `input`, on the calling thread. The highest
  /// status that one returned.
  CA::OSStatus cycle(const CA::AudioBufferList& input);

  /// Called when a device has started, and before one stops.
  std::function<void()> whenStarted = [] {};
  std::function<void()> whenStopping = [] {};

  /// What exists now, by id, in the order of creation.
  std::vector<CA::AudioObjectID> taps() const;
  std::vector<CA::AudioObjectID> aggregateDevices() const;
  std::size_t installedIOProcs() const { return ioProcs_.size(); }

  /// What the last calls were given, whole, also when they failed.
  std::optional<CA::TapDescription> lastTapDescription;
  std::optional<CA::Description> lastAggregateDescription;
  void* lastClientData = nullptr;
  CA::AudioDeviceIOProc lastIOProc = nullptr;

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

  /// 48 kHz interleaved stereo of 32-bit floats.
  static CA::AudioStreamBasicDescription floatStereo();

 private:
  struct IOProc {
    int number;
    CA::AudioObjectID device;
    CA::AudioDeviceIOProc procedure;
    void* clientData;
    bool running;
  };

  /// A property's bytes, or the status of a query that fails.
  struct Answer {
    CA::OSStatus status = 0;
    std::string bytes;
    std::string shown;  ///< in the journal
  };

  CA::OSStatus create(Call call, const std::string& line, const char* kind,
                      std::vector<CA::AudioObjectID>& objects, CA::AudioObjectID& nextID,
                      CA::AudioObjectID* outID);
  CA::OSStatus destroy(Call call, const char* name, std::vector<CA::AudioObjectID>& objects,
                       CA::AudioObjectID id);
  CA::OSStatus journaled(const std::string& line, CA::OSStatus status,
                         const std::string& result = "");
  CA::OSStatus statusOf(Call call) const;
  CA::OSStatus statusOf(Call call, bool isKnown) const;
  bool yieldsNothing(Call call) const { return empty_.contains(call); }
  IOProc* find(CA::AudioDeviceIOProcID ioProcID) const;
  std::string deviceCall(const char* name, CA::AudioObjectID device,
                         CA::AudioDeviceIOProcID ioProcID) const;
  std::string nameOf(CA::AudioDeviceIOProcID ioProcID) const;
  const ProcessObject* processObject(CA::AudioObjectID object) const;
  Answer plainProperty(CA::AudioObjectID object, std::uint32_t selector) const;
  Answer textProperty(CA::AudioObjectID object, std::uint32_t selector) const;
  Answer processObjectList() const;

  Journal& journal_;
  std::map<Call, CA::OSStatus> failures_;
  std::set<Call> empty_;
  std::vector<CA::AudioObjectID> taps_;
  std::vector<CA::AudioObjectID> aggregateDevices_;
  std::vector<std::unique_ptr<IOProc>> ioProcs_;
  CA::AudioObjectID nextTap_ = 101;
  CA::AudioObjectID nextAggregateDevice_ = 201;
  int nextIOProc_ = 1;
};

}  // namespace audrel::fakes
