#include "tests/platform/linux/pipewire/harness/Recorder.h"

#include <thread>
#include <utility>

namespace audrel::pwtest {

namespace {

constexpr std::uint32_t textReferenceSize = 8;

constexpr CA::AudioObjectPropertyAddress global(std::uint32_t selector) {
  return {selector, CA::kAudioObjectPropertyScopeGlobal, CA::kAudioObjectPropertyElementMain};
}

}  // namespace

class LogKeeper::KeepingLogger final : public os::Logger {
 public:
  explicit KeepingLogger(std::shared_ptr<Lines> lines) : lines_(std::move(lines)) {}

  void log(os::LogLevel level, std::string_view line) noexcept override {
    const std::lock_guard lock(lines_->mutex);
    lines_->lines.push_back((level == os::LogLevel::error ? "error: " : "info: ") +
                            std::string(line));
  }

 private:
  std::shared_ptr<Lines> lines_;
};

std::shared_ptr<os::Logger> LogKeeper::makeLogger(const std::string& /*subsystem*/,
                                                  const std::string& /*category*/) {
  return std::make_shared<KeepingLogger>(lines_);
}

std::vector<std::string> LogKeeper::lines() const {
  const std::lock_guard lock(lines_->mutex);
  return lines_->lines;
}

std::string CountingUUIDs::uuidString() {
  return "uuid-" + std::to_string(++count_);
}

Recorder::Recorder(const std::string& socketPath, std::shared_ptr<linuxos::CaptureTime> time)
    : layer_(std::make_shared<Layer>(std::move(time))) {
  layer_->connection.useServer(socketPath);
}

Recorder::~Recorder() {
  stop();
}

std::vector<CA::AudioObjectID> Recorder::processes() {
  const auto address = global(CA::kAudioHardwarePropertyProcessObjectList);
  std::uint32_t size = 0;
  hardware().AudioObjectGetPropertyDataSize(CA::kAudioObjectSystemObject, address, 0, nullptr,
                                            &size);
  std::vector<CA::AudioObjectID> ids(size / sizeof(CA::AudioObjectID));
  hardware().AudioObjectGetPropertyData(CA::kAudioObjectSystemObject, address, 0, nullptr, &size,
                                        ids.data());
  ids.resize(size / sizeof(CA::AudioObjectID));
  return ids;
}

pid_t Recorder::pidOf(CA::AudioObjectID process) {
  pid_t pid = -1;
  std::uint32_t size = sizeof pid;
  hardware().AudioObjectGetPropertyData(process, global(CA::kAudioProcessPropertyPID), 0, nullptr,
                                        &size, &pid);
  return pid;
}

std::string Recorder::bundleIdOf(CA::AudioObjectID process) {
  std::string text;
  std::uint32_t size = textReferenceSize;
  hardware().AudioObjectGetPropertyData(process, global(CA::kAudioProcessPropertyBundleID), 0,
                                        nullptr, &size, &text);
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
  std::uint32_t size = textReferenceSize;
  if (const auto status = hardware().AudioObjectGetPropertyData(
          tap_, global(CA::kAudioTapPropertyUID), 0, nullptr, &size, &uid)) {
    return status;
  }
  size = sizeof format_;
  if (const auto status = hardware().AudioObjectGetPropertyData(
          tap_, global(CA::kAudioTapPropertyFormat), 0, nullptr, &size, &format_)) {
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
