// What `start` asks of the hardware layer: the tap's description, its UID and format, and the
// aggregate device around it.

#include <cstdint>
#include <vector>

#include "engine/RecordingEngine.h"
#include "engine/TapDescription.h"
#include "model/RecorderError.h"

namespace audrel {
namespace {

/// What the hardware layer hands over for a text: one reference.
constexpr std::uint32_t textReferenceSize = 8;

constexpr CA::AudioObjectPropertyAddress globalAddress(std::uint32_t selector) {
  return {selector, CA::kAudioObjectPropertyScopeGlobal, CA::kAudioObjectPropertyElementMain};
}

/// The default output device is named as the clock alone and is no sub-device, so that nothing is
/// captured but the tap.
CA::Description aggregateDescription(const std::string& uid, const std::string& outputDeviceUID,
                                     const std::string& tapUID) {
  CA::Description tap;
  tap.entries = {
      {CA::kAudioSubTapUIDKey, tapUID},
      {CA::kAudioSubTapDriftCompensationKey, true},
  };
  CA::Description device;
  device.entries = {
      {CA::kAudioAggregateDeviceNameKey, std::string(tapName)},
      {CA::kAudioAggregateDeviceUIDKey, uid},
      {CA::kAudioAggregateDeviceMainSubDeviceKey, outputDeviceUID},
      {CA::kAudioAggregateDeviceIsPrivateKey, true},
      {CA::kAudioAggregateDeviceIsStackedKey, false},
      {CA::kAudioAggregateDeviceTapAutoStartKey, true},
      {CA::kAudioAggregateDeviceTapListKey, std::vector<CA::Description>{tap}},
  };
  return device;
}

}  // namespace

CA::TapDescription tapDescription(const RecordingSource& source) {
  const RecordingSource::Process* process = source.asProcess();
  CA::TapDescription description =
      process != nullptr
          ? CA::TapDescription{CA::TapDescription::Kind::stereoMixdownOfProcesses,
                               {process->id},
                               {},
                               {}}
          : CA::TapDescription{
                CA::TapDescription::Kind::stereoGlobalTapButExcludeProcesses, {}, {}, {}};
  description.muteBehavior = CA::TapMuteBehavior::unmuted;
  description.name = tapName;
  return description;
}

std::string RecordingEngine::readTapUID(CA::AudioObjectID tapID) {
  std::uint32_t size = textReferenceSize;
  std::string uid;
  const CA::OSStatus status = hardware_.AudioObjectGetPropertyData(
      tapID, globalAddress(CA::kAudioTapPropertyUID), 0, nullptr, &size, &uid);
  if (status != CA::kAudioHardwareNoError) {
    logFailure("Reading tap UID", status);
    throw RecorderError::tapCreationFailed(status);
  }
  return uid;
}

CA::AudioStreamBasicDescription RecordingEngine::readTapFormat(CA::AudioObjectID tapID) {
  CA::AudioStreamBasicDescription description;
  std::uint32_t size = sizeof description;
  const CA::OSStatus status = hardware_.AudioObjectGetPropertyData(
      tapID, globalAddress(CA::kAudioTapPropertyFormat), 0, nullptr, &size, &description);
  if (status != CA::kAudioHardwareNoError) {
    logFailure("Reading tap format", status);
    throw RecorderError::streamFormatUnavailable(status);
  }
  return description;
}

std::string RecordingEngine::readDefaultOutputDeviceUID() {
  CA::AudioObjectID device = CA::kAudioObjectUnknown;
  std::uint32_t deviceSize = sizeof device;
  const CA::OSStatus deviceStatus = hardware_.AudioObjectGetPropertyData(
      CA::kAudioObjectSystemObject, globalAddress(CA::kAudioHardwarePropertyDefaultOutputDevice), 0,
      nullptr, &deviceSize, &device);
  if (deviceStatus != CA::kAudioHardwareNoError || device == CA::kAudioObjectUnknown) {
    throw RecorderError::aggregateDeviceFailed(deviceStatus);
  }

  std::uint32_t uidSize = textReferenceSize;
  std::string uid;
  const CA::OSStatus uidStatus = hardware_.AudioObjectGetPropertyData(
      device, globalAddress(CA::kAudioDevicePropertyDeviceUID), 0, nullptr, &uidSize, &uid);
  if (uidStatus != CA::kAudioHardwareNoError) {
    throw RecorderError::aggregateDeviceFailed(uidStatus);
  }
  return uid;
}

CA::AudioObjectID RecordingEngine::createAggregateDevice(const std::string& tapUID) {
  const std::string uid = uuids_.uuidString();
  const std::string outputDeviceUID = readDefaultOutputDeviceUID();

  CA::AudioObjectID device = CA::kAudioObjectUnknown;
  const CA::OSStatus status = hardware_.AudioHardwareCreateAggregateDevice(
      aggregateDescription(uid, outputDeviceUID, tapUID), &device);
  if (status != CA::kAudioHardwareNoError || device == CA::kAudioObjectUnknown) {
    logFailure("AudioHardwareCreateAggregateDevice", status);
    throw RecorderError::aggregateDeviceFailed(status);
  }
  return device;
}

}  // namespace audrel
