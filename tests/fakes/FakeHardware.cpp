#include "tests/fakes/FakeHardware.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>
#include <variant>

namespace audrel::fakes {
namespace {

/// What a failing call leaves in its results.
constexpr std::uint32_t scribble = 0xBADBAD;

std::string status(CA::OSStatus status) {
  return "status " + std::to_string(status);
}

std::string code(std::uint32_t fourCharCode) {
  std::string text;
  for (unsigned shift = 32; shift != 0; shift -= 8) {
    text += static_cast<char>(fourCharCode >> (shift - 8) & 0xFFU);
  }
  return "'" + text + "'";
}

std::string shown(const CA::AudioObjectPropertyAddress& address) {
  return code(address.mSelector) + "/" + code(address.mScope) + "/" +
         std::to_string(address.mElement);
}

std::string shownQualifier(std::uint32_t size, const void* data) {
  return size == 0 && data == nullptr ? "no qualifier"
                                      : "qualifier of " + std::to_string(size) + " bytes";
}

std::string shown(const CA::TapDescription& description) {
  using Kind = CA::TapDescription::Kind;
  std::string text = description.kind == Kind::stereoGlobalTapButExcludeProcesses
                         ? "stereoGlobalTapButExcludeProcesses ["
                         : "stereoMixdownOfProcesses [";
  const char* separator = "";
  for (const CA::AudioObjectID process : description.processes) {
    text += separator + std::to_string(process);
    separator = ", ";
  }
  text += "]";
  if (description.muteBehavior) {
    text +=
        ", muteBehavior " + std::to_string(static_cast<std::int64_t>(*description.muteBehavior));
  }
  if (description.name) {
    text += ", name " + inQuotes(*description.name);
  }
  return text;
}

std::string shown(const CA::Description& description);

struct ShowValue {
  std::string operator()(const std::string& value) const { return inQuotes(value); }
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(const std::vector<CA::Description>& values) const {
    std::string text = "[";
    const char* separator = "";
    for (const CA::Description& value : values) {
      text += separator + shown(value);
      separator = ", ";
    }
    return text + "]";
  }
};

std::string shown(const CA::Description& description) {
  std::string text = "{";
  const char* separator = "";
  for (const auto& [key, value] : description.entries) {
    text += separator + key + ": " + std::visit(ShowValue{}, value);
    separator = ", ";
  }
  return text + "}";
}

template <typename Value>
std::string bytesOf(const Value& value) {
  static_assert(std::is_trivially_copyable_v<Value>);
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

bool forget(std::vector<CA::AudioObjectID>& objects, CA::AudioObjectID object) {
  return std::erase(objects, object) != 0;
}

}  // namespace

CA::AudioStreamBasicDescription FakeHardware::floatStereo() {
  return {48000,
          CA::kAudioFormatLinearPCM,
          CA::kAudioFormatFlagIsFloat | CA::kAudioFormatFlagIsPacked,
          8,
          1,
          8,
          2,
          32,
          0};
}

void FakeHardware::restore(Call call) {
  failures_.erase(call);
  empty_.erase(call);
}

CA::OSStatus FakeHardware::cycle(const CA::AudioBufferList& input) {
  CA::OSStatus highest = 0;
  const CA::AudioTimeStamp time;
  // By index: the procedure's own code may not install or remove one, but must not crash us.
  for (std::size_t i = 0; i < ioProcs_.size(); ++i) {
    const IOProc& ioProc = *ioProcs_[i];
    if (ioProc.running) {
      CA::AudioBufferList output;
      highest = std::max(highest, ioProc.procedure(ioProc.device, &time, &input, &time, &output,
                                                   &time, ioProc.clientData));
    }
  }
  return highest;
}

std::vector<CA::AudioObjectID> FakeHardware::taps() const {
  return taps_;
}

std::vector<CA::AudioObjectID> FakeHardware::aggregateDevices() const {
  return aggregateDevices_;
}

CA::OSStatus FakeHardware::statusOf(Call call) const {
  const auto failure = failures_.find(call);
  return failure == failures_.end() ? CA::kAudioHardwareNoError : failure->second;
}

FakeHardware::IOProc* FakeHardware::find(CA::AudioDeviceIOProcID ioProcID) const {
  for (const auto& ioProc : ioProcs_) {
    if (reinterpret_cast<CA::AudioDeviceIOProcID>(ioProc.get()) == ioProcID) {
      return ioProc.get();
    }
  }
  return nullptr;
}

std::string FakeHardware::nameOf(CA::AudioDeviceIOProcID ioProcID) const {
  if (ioProcID == nullptr) {
    return "no ioProc";
  }
  const IOProc* ioProc = find(ioProcID);
  return ioProc == nullptr ? "unknown ioProc" : "ioProc " + std::to_string(ioProc->number);
}

CA::OSStatus FakeHardware::AudioHardwareCreateProcessTap(const CA::TapDescription& description,
                                                         CA::AudioObjectID* outTapID) {
  lastTapDescription = description;
  const std::string call = "AudioHardwareCreateProcessTap(" + shown(description) + ") -> ";
  const CA::OSStatus result = statusOf(Call::createProcessTap);
  if (result != 0) {
    *outTapID = scribble;
    journal_.add(call + status(result));
    return result;
  }
  if (yieldsNothing(Call::createProcessTap)) {
    journal_.add(call + status(0) + ", no tap");
    return 0;
  }
  *outTapID = nextTap_++;
  taps_.push_back(*outTapID);
  journal_.add(call + status(0) + ", tap " + std::to_string(*outTapID));
  return 0;
}

CA::OSStatus FakeHardware::AudioHardwareDestroyProcessTap(CA::AudioObjectID tapID) {
  CA::OSStatus result = statusOf(Call::destroyProcessTap);
  if (!forget(taps_, tapID) && result == 0) {
    result = CA::kAudioHardwareBadObjectError;
  }
  journal_.add("AudioHardwareDestroyProcessTap(" + std::to_string(tapID) + ") -> " +
               status(result));
  return result;
}

CA::OSStatus FakeHardware::AudioHardwareCreateAggregateDevice(const CA::Description& description,
                                                              CA::AudioObjectID* outDeviceID) {
  lastAggregateDescription = description;
  const std::string call = "AudioHardwareCreateAggregateDevice(" + shown(description) + ") -> ";
  const CA::OSStatus result = statusOf(Call::createAggregateDevice);
  if (result != 0) {
    *outDeviceID = scribble;
    journal_.add(call + status(result));
    return result;
  }
  if (yieldsNothing(Call::createAggregateDevice)) {
    journal_.add(call + status(0) + ", no device");
    return 0;
  }
  *outDeviceID = nextAggregateDevice_++;
  aggregateDevices_.push_back(*outDeviceID);
  journal_.add(call + status(0) + ", device " + std::to_string(*outDeviceID));
  return 0;
}

CA::OSStatus FakeHardware::AudioHardwareDestroyAggregateDevice(CA::AudioObjectID deviceID) {
  CA::OSStatus result = statusOf(Call::destroyAggregateDevice);
  if (!forget(aggregateDevices_, deviceID) && result == 0) {
    result = CA::kAudioHardwareBadObjectError;
  }
  journal_.add("AudioHardwareDestroyAggregateDevice(" + std::to_string(deviceID) + ") -> " +
               status(result));
  return result;
}

CA::OSStatus FakeHardware::AudioDeviceCreateIOProcID(CA::AudioObjectID device,
                                                     CA::AudioDeviceIOProc procedure,
                                                     void* clientData,
                                                     CA::AudioDeviceIOProcID* outIOProcID) {
  lastIOProc = procedure;
  lastClientData = clientData;
  const std::string call = "AudioDeviceCreateIOProcID(" + std::to_string(device) + ") -> ";
  const CA::OSStatus result = statusOf(Call::createIOProcID);
  if (result != 0) {
    *outIOProcID = reinterpret_cast<CA::AudioDeviceIOProcID>(this);
    journal_.add(call + status(result));
    return result;
  }
  if (yieldsNothing(Call::createIOProcID)) {
    journal_.add(call + status(0) + ", no ioProc");
    return 0;
  }
  ioProcs_.push_back(
      std::make_unique<IOProc>(IOProc{nextIOProc_++, device, procedure, clientData, false}));
  *outIOProcID = reinterpret_cast<CA::AudioDeviceIOProcID>(ioProcs_.back().get());
  journal_.add(call + status(0) + ", " + nameOf(*outIOProcID));
  return 0;
}

CA::OSStatus FakeHardware::AudioDeviceDestroyIOProcID(CA::AudioObjectID device,
                                                      CA::AudioDeviceIOProcID ioProcID) {
  const std::string call =
      "AudioDeviceDestroyIOProcID(" + std::to_string(device) + ", " + nameOf(ioProcID) + ") -> ";
  CA::OSStatus result = statusOf(Call::destroyIOProcID);
  const IOProc* known = find(ioProcID);
  if (known == nullptr && result == 0) {
    result = CA::kAudioHardwareBadObjectError;
  }
  std::erase_if(ioProcs_, [known](const auto& ioProc) { return ioProc.get() == known; });
  journal_.add(call + status(result));
  return result;
}

CA::OSStatus FakeHardware::AudioDeviceStart(CA::AudioObjectID device,
                                            CA::AudioDeviceIOProcID ioProcID) {
  CA::OSStatus result = statusOf(Call::deviceStart);
  IOProc* ioProc = find(ioProcID);
  if (ioProc == nullptr && result == 0) {
    result = CA::kAudioHardwareBadObjectError;
  }
  if (result == 0) {
    ioProc->running = true;
  }
  journal_.add("AudioDeviceStart(" + std::to_string(device) + ", " + nameOf(ioProcID) + ") -> " +
               status(result));
  return result;
}

CA::OSStatus FakeHardware::AudioDeviceStop(CA::AudioObjectID device,
                                           CA::AudioDeviceIOProcID ioProcID) {
  CA::OSStatus result = statusOf(Call::deviceStop);
  IOProc* ioProc = find(ioProcID);
  if (ioProc == nullptr) {
    result = result == 0 ? CA::kAudioHardwareBadObjectError : result;
  } else {
    ioProc->running = false;
  }
  journal_.add("AudioDeviceStop(" + std::to_string(device) + ", " + nameOf(ioProcID) + ") -> " +
               status(result));
  return result;
}

CA::OSStatus FakeHardware::AudioObjectGetPropertyDataSize(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t qualifierDataSize, const void* qualifierData, std::uint32_t* outDataSize) {
  const std::string call = "AudioObjectGetPropertyDataSize(" + std::to_string(object) + ", " +
                           shown(address) + ", " +
                           shownQualifier(qualifierDataSize, qualifierData) + ", from " +
                           std::to_string(*outDataSize) + ") -> ";
  CA::OSStatus result = statusOf(Call::processObjectListSize);
  if (object != CA::kAudioObjectSystemObject ||
      address.mSelector != CA::kAudioHardwarePropertyProcessObjectList) {
    result = CA::kAudioHardwareUnknownPropertyError;
  }
  if (result != 0) {
    *outDataSize = scribble;
    journal_.add(call + status(result));
    return result;
  }
  const std::size_t size = processObjects.size() * sizeof(CA::AudioObjectID);
  *outDataSize = processObjectListSize.value_or(static_cast<std::uint32_t>(size));
  journal_.add(call + status(0) + ", " + std::to_string(*outDataSize) + " bytes");
  return 0;
}

CA::OSStatus FakeHardware::AudioObjectGetPropertyData(CA::AudioObjectID object,
                                                      const CA::AudioObjectPropertyAddress& address,
                                                      std::uint32_t qualifierDataSize,
                                                      const void* qualifierData,
                                                      std::uint32_t* ioDataSize, void* outData) {
  const std::string call = "AudioObjectGetPropertyData(" + std::to_string(object) + ", " +
                           shown(address) + ", " +
                           shownQualifier(qualifierDataSize, qualifierData) + ", size " +
                           std::to_string(*ioDataSize) + ") -> ";
  const Answer answer = plainProperty(object, address.mSelector);
  if (answer.status != 0) {
    std::memset(outData, 0x5A, *ioDataSize);
    journal_.add(call + status(answer.status));
    return answer.status;
  }
  const std::string_view before(static_cast<const char*>(outData), *ioDataSize);
  const bool leavesGarbage =
      answer.bytes.empty() && before.find_first_not_of('\0') != std::string_view::npos;
  *ioDataSize = std::min(*ioDataSize, static_cast<std::uint32_t>(answer.bytes.size()));
  std::memcpy(outData, answer.bytes.data(), *ioDataSize);
  journal_.add(call + status(0) + ", " + answer.shown + (leavesGarbage ? ", not over 0" : ""));
  return 0;
}

CA::OSStatus FakeHardware::AudioObjectGetPropertyData(CA::AudioObjectID object,
                                                      const CA::AudioObjectPropertyAddress& address,
                                                      std::uint32_t qualifierDataSize,
                                                      const void* qualifierData,
                                                      std::uint32_t* ioDataSize,
                                                      std::string* outText) {
  const std::string call =
      "AudioObjectGetPropertyData(" + std::to_string(object) + ", " + shown(address) + ", " +
      shownQualifier(qualifierDataSize, qualifierData) + ", size " + std::to_string(*ioDataSize) +
      ", text from " + inQuotes(*outText) + ") -> ";
  const Answer answer = textProperty(object, address.mSelector);
  if (answer.status != 0) {
    *outText = "scribble";
    journal_.add(call + status(answer.status));
    return answer.status;
  }
  *outText = answer.bytes;
  journal_.add(call + status(0) + ", " + inQuotes(answer.bytes));
  return 0;
}

const FakeHardware::ProcessObject* FakeHardware::processObject(CA::AudioObjectID object) const {
  const auto found = std::find_if(processObjects.begin(), processObjects.end(),
                                  [object](const ProcessObject& p) { return p.id == object; });
  return found == processObjects.end() ? nullptr : &*found;
}

FakeHardware::Answer FakeHardware::processObjectList() const {
  Answer answer{statusOf(Call::processObjectList), {}, {}};
  for (const ProcessObject& process : processObjects) {
    answer.bytes += bytesOf(process.id);
    answer.shown += (answer.shown.empty() ? "" : ", ") + std::to_string(process.id);
  }
  // Of a size that promises more than there is, the rest stays as it was.
  answer.bytes.resize(std::min(
      answer.bytes.size(),
      std::size_t{processObjectListSize.value_or(std::numeric_limits<std::uint32_t>::max())}));
  answer.shown = "objects " + answer.shown;
  return answer;
}

FakeHardware::Answer FakeHardware::plainProperty(CA::AudioObjectID object,
                                                 std::uint32_t selector) const {
  if (object == CA::kAudioObjectSystemObject) {
    if (selector == CA::kAudioHardwarePropertyProcessObjectList) {
      return processObjectList();
    }
    if (selector == CA::kAudioHardwarePropertyDefaultOutputDevice) {
      if (yieldsNothing(Call::defaultOutputDevice)) {
        return {0, {}, "device 0"};
      }
      return {statusOf(Call::defaultOutputDevice), bytesOf(defaultOutputDevice),
              "device " + std::to_string(defaultOutputDevice)};
    }
  }
  if (selector == CA::kAudioTapPropertyFormat) {
    if (yieldsNothing(Call::tapFormat)) {
      return {0, {}, "nothing"};
    }
    const bool known = std::find(taps_.begin(), taps_.end(), object) != taps_.end();
    return {
        known ? statusOf(Call::tapFormat) : CA::kAudioHardwareBadObjectError, bytesOf(tapFormat),
        shortNumber(tapFormat.mSampleRate) + " Hz, " + std::to_string(tapFormat.mChannelsPerFrame) +
            " channels, " + std::to_string(tapFormat.mBytesPerFrame) + " bytes a frame"};
  }
  if (selector == CA::kAudioProcessPropertyPID) {
    if (const ProcessObject* process = processObject(object)) {
      return process->pid ? Answer{process->pidStatus, bytesOf(*process->pid),
                                   "pid " + std::to_string(*process->pid)}
                          : Answer{0, {}, "nothing"};
    }
  }
  return {CA::kAudioHardwareBadObjectError, {}, {}};
}

FakeHardware::Answer FakeHardware::textProperty(CA::AudioObjectID object,
                                                std::uint32_t selector) const {
  if (selector == CA::kAudioTapPropertyUID) {
    const bool known = std::find(taps_.begin(), taps_.end(), object) != taps_.end();
    return {known ? statusOf(Call::tapUID) : CA::kAudioHardwareBadObjectError,
            "fake-tap-" + std::to_string(object),
            {}};
  }
  if (selector == CA::kAudioDevicePropertyDeviceUID && object == defaultOutputDevice) {
    return {statusOf(Call::deviceUID), outputDeviceUID, {}};
  }
  if (selector == CA::kAudioProcessPropertyBundleID) {
    if (const ProcessObject* process = processObject(object)) {
      return {process->bundleIDStatus, process->bundleID, {}};
    }
  }
  return {CA::kAudioHardwareBadObjectError, {}, {}};
}

}  // namespace audrel::fakes
