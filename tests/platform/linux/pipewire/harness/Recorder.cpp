#include "tests/platform/linux/pipewire/harness/Recorder.h"

#include <thread>
#include <utility>

#include "platform/AudioObjectProperties.h"

namespace audrel::pwtest {

Recorder::Recorder(const std::string& socketPath, std::shared_ptr<linuxos::CaptureTime> time)
    : layer_(std::make_shared<Layer>(std::move(time))) {
  layer_->connection.useServer(socketPath);
}

Recorder::~Recorder() {
  stop();
}

std::vector<CA::AudioObjectID> Recorder::processes() {
  constexpr auto list = CA::kAudioHardwarePropertyProcessObjectList;
  std::uint32_t size = 0;
  std::vector<CA::AudioObjectID> ids;
  CA::readPropertySize(hardware(), CA::kAudioObjectSystemObject, list, &size);
  CA::readProperty(hardware(), CA::kAudioObjectSystemObject, list, size, &ids);
  std::erase(ids, CA::kAudioObjectUnknown);  // has gone meanwhile
  return ids;
}

pid_t Recorder::pidOf(CA::AudioObjectID process) {
  pid_t pid = -1;
  CA::readProperty(hardware(), process, CA::kAudioProcessPropertyPID, &pid);
  return pid;
}

std::string Recorder::bundleIdOf(CA::AudioObjectID process) {
  std::string text;
  CA::readProperty(hardware(), process, CA::kAudioProcessPropertyBundleID, &text);
  return text;
}

CA::AudioObjectID Recorder::waitForProcess(pid_t pid) {
  CA::AudioObjectID found = 0;
  waitFor([&] {
    for (const CA::AudioObjectID id : processes()) {
      found = pidOf(id) == pid ? id : found;
    }
    return found != 0;
  });
  return found;
}

CA::OSStatus Recorder::startProcess(CA::AudioObjectID process) {
  return start({.kind = CA::TapDescription::Kind::stereoMixdownOfProcesses,
                .processes = {process},
                .muteBehavior = CA::TapMuteBehavior::unmuted,
                .name = "test"});
}

CA::OSStatus Recorder::startEverything() {
  return start({.kind = CA::TapDescription::Kind::stereoGlobalTapButExcludeProcesses,
                .processes = {},
                .muteBehavior = CA::TapMuteBehavior::unmuted,
                .name = "test"});
}

CA::OSStatus Recorder::start(const CA::TapDescription& description) {
  samples_.clear();
  if (const auto status = hardware().AudioHardwareCreateProcessTap(description, &tap_)) {
    return status;
  }
  std::string uid;
  if (const auto status = CA::readProperty(hardware(), tap_, CA::kAudioTapPropertyUID, &uid)) {
    return status;
  }
  if (const auto status =
          CA::readProperty(hardware(), tap_, CA::kAudioTapPropertyFormat, &format_)) {
    return status;
  }
  return makeDevice(uid);
}

CA::OSStatus Recorder::makeDevice(const std::string& tapUID) {
  CA::Description tap;
  tap.entries = {{CA::kAudioSubTapUIDKey, tapUID}, {CA::kAudioSubTapDriftCompensationKey, true}};
  CA::Description description;
  description.entries = {{CA::kAudioAggregateDeviceUIDKey, layer_->uuids.uuidString()},
                         {CA::kAudioAggregateDeviceIsPrivateKey, true},
                         {CA::kAudioAggregateDeviceTapListKey, std::vector{tap}}};
  if (const auto status = hardware().AudioHardwareCreateAggregateDevice(description, &device_)) {
    return status;
  }
  const auto procedure = [](CA::AudioObjectID, const CA::AudioTimeStamp*,
                            const CA::AudioBufferList* input, const CA::AudioTimeStamp*,
                            CA::AudioBufferList*, const CA::AudioTimeStamp*,
                            void* self) -> CA::OSStatus {
    static_cast<Recorder*>(self)->take(*input);
    return CA::kAudioHardwareNoError;
  };
  if (const auto status =
          hardware().AudioDeviceCreateIOProcID(device_, procedure, this, &procedure_)) {
    return status;
  }
  return hardware().AudioDeviceStart(device_, procedure_);
}

CA::OSStatus Recorder::stop() {
  CA::OSStatus first = CA::kAudioHardwareNoError;
  const auto note = [&](CA::OSStatus status) { first = first != 0 ? first : status; };
  if (procedure_ != nullptr) {
    note(hardware().AudioDeviceStop(device_, procedure_));
    note(hardware().AudioDeviceDestroyIOProcID(device_, procedure_));
    procedure_ = nullptr;
  }
  if (device_ != 0) {
    note(hardware().AudioHardwareDestroyAggregateDevice(device_));
    device_ = 0;
  }
  if (tap_ != 0) {
    note(hardware().AudioHardwareDestroyProcessTap(tap_));
    tap_ = 0;
  }
  return first;
}

CA::OSStatus Recorder::destroyProcedure() {
  return hardware().AudioDeviceDestroyIOProcID(device_, std::exchange(procedure_, nullptr));
}

CA::OSStatus Recorder::destroyDevice() {
  procedure_ = nullptr;
  return hardware().AudioHardwareDestroyAggregateDevice(std::exchange(device_, 0));
}

void Recorder::take(const CA::AudioBufferList& input) noexcept {
  while (isToHold_) {
    isHeldUp_ = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  isHeldUp_ = false;
  const CA::AudioBuffer& buffer = input.mBuffers[0];
  if (input.mNumberBuffers != 1 || buffer.mNumberChannels != 2) {
    samples_.fail();
    return;
  }
  samples_.append(static_cast<const float*>(buffer.mData),
                  buffer.mDataByteSize / (2 * sizeof(float)));
}

}  // namespace audrel::pwtest
