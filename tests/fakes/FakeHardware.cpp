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

std::string propertyCall(const char* name, CA::AudioObjectID object,
                         const CA::AudioObjectPropertyAddress& address, std::uint32_t qualifierSize,
                         const void* qualifier) {
  return std::string(name) + "(" + std::to_string(object) + ", " + shown(address) + ", " +
         shownQualifier(qualifierSize, qualifier) + ", ";
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

void FakeHardware::restore() {
  failures_.clear();
  empty_.clear();
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

CA::OSStatus FakeHardware::journaled(const std::string& line, CA::OSStatus status,
                                     const std::string& result) {
  journal_.add(line + " -> status " + std::to_string(status) + result);
  return status;
}

CA::OSStatus FakeHardware::statusOf(Call call) const {
  const auto failure = failures_.find(call);
  return failure == failures_.end() ? CA::kAudioHardwareNoError : failure->second;
}

/// A call that was told to fail keeps its own status whatever it is given.
CA::OSStatus FakeHardware::statusOf(Call call, bool isKnown) const {
  const CA::OSStatus status = statusOf(call);
  return status == 0 && !isKnown ? CA::kAudioHardwareBadObjectError : status;
}

CA::OSStatus FakeHardware::create(Call call, const std::string& line, const char* kind,
                                  std::vector<CA::AudioObjectID>& objects,
                                  CA::AudioObjectID& nextID, CA::AudioObjectID* outID) {
  if (const CA::OSStatus status = statusOf(call); status != 0) {
    *outID = scribble;
    return journaled(line, status);
  }
  if (yieldsNothing(call)) {
    return journaled(line, 0, std::string(", no ") + kind);
  }
  *outID = nextID++;
  objects.push_back(*outID);
  return journaled(line, 0, std::string(", ") + kind + " " + std::to_string(*outID));
}

CA::OSStatus FakeHardware::destroy(Call call, const char* name,
                                   std::vector<CA::AudioObjectID>& objects, CA::AudioObjectID id) {
  const bool isKnown = std::erase(objects, id) != 0;
  return journaled(std::string(name) + "(" + std::to_string(id) + ")", statusOf(call, isKnown));
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

std::string FakeHardware::deviceCall(const char* name, CA::AudioObjectID device,
                                     CA::AudioDeviceIOProcID ioProcID) const {
  return std::string(name) + "(" + std::to_string(device) + ", " + nameOf(ioProcID) + ")";
}

CA::OSStatus FakeHardware::AudioHardwareCreateProcessTap(const CA::TapDescription& description,
                                                         CA::AudioObjectID* outTapID) {
  lastTapDescription = description;
  return create(Call::createProcessTap, "AudioHardwareCreateProcessTap(" + shown(description) + ")",
                "tap", taps_, nextTap_, outTapID);
}

CA::OSStatus FakeHardware::AudioHardwareDestroyProcessTap(CA::AudioObjectID tapID) {
  return destroy(Call::destroyProcessTap, "AudioHardwareDestroyProcessTap", taps_, tapID);
}

CA::OSStatus FakeHardware::AudioHardwareCreateAggregateDevice(const CA::Description& description,
                                                              CA::AudioObjectID* outDeviceID) {
  lastAggregateDescription = description;
  return create(Call::createAggregateDevice,
                "AudioHardwareCreateAggregateDevice(" + shown(description) + ")", "device",
                aggregateDevices_, nextAggregateDevice_, outDeviceID);
}

CA::OSStatus FakeHardware::AudioHardwareDestroyAggregateDevice(CA::AudioObjectID deviceID) {
  return destroy(Call::destroyAggregateDevice, "AudioHardwareDestroyAggregateDevice",
                 aggregateDevices_, deviceID);
}

CA::OSStatus FakeHardware::AudioDeviceCreateIOProcID(CA::AudioObjectID device,
                                                     CA::AudioDeviceIOProc procedure,
                                                     void* clientData,
                                                     CA::AudioDeviceIOProcID* outIOProcID) {
  lastIOProc = procedure;
  lastClientData = clientData;
  const std::string line = "AudioDeviceCreateIOProcID(" + std::to_string(device) + ")";
  if (const CA::OSStatus status = statusOf(Call::createIOProcID); status != 0) {
    *outIOProcID = reinterpret_cast<CA::AudioDeviceIOProcID>(this);
    return journaled(line, status);
  }
  if (yieldsNothing(Call::createIOProcID)) {
    return journaled(line, 0, ", no ioProc");
  }
  ioProcs_.push_back(
      std::make_unique<IOProc>(IOProc{nextIOProc_++, device, procedure, clientData, false}));
  *outIOProcID = reinterpret_cast<CA::AudioDeviceIOProcID>(ioProcs_.back().get());
  return journaled(line, 0, ", " + nameOf(*outIOProcID));
}

CA::OSStatus FakeHardware::AudioDeviceDestroyIOProcID(CA::AudioObjectID device,
                                                      CA::AudioDeviceIOProcID ioProcID) {
  const std::string line = deviceCall("AudioDeviceDestroyIOProcID", device, ioProcID);
  const IOProc* known = find(ioProcID);
  std::erase_if(ioProcs_, [known](const auto& ioProc) { return ioProc.get() == known; });
  return journaled(line, statusOf(Call::destroyIOProcID, known != nullptr));
}

CA::OSStatus FakeHardware::AudioDeviceStart(CA::AudioObjectID device,
                                            CA::AudioDeviceIOProcID ioProcID) {
  IOProc* ioProc = find(ioProcID);
  const CA::OSStatus status = journaled(deviceCall("AudioDeviceStart", device, ioProcID),
                                        statusOf(Call::deviceStart, ioProc != nullptr));
  if (status == 0) {
    ioProc->running = true;
    whenStarted();
  }
  return status;
}

CA::OSStatus FakeHardware::AudioDeviceStop(CA::AudioObjectID device,
                                           CA::AudioDeviceIOProcID ioProcID) {
  whenStopping();
  IOProc* ioProc = find(ioProcID);
  if (ioProc != nullptr) {
    ioProc->running = false;
  }
  return journaled(deviceCall("AudioDeviceStop", device, ioProcID),
                   statusOf(Call::deviceStop, ioProc != nullptr));
}

CA::OSStatus FakeHardware::AudioObjectGetPropertyDataSize(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t qualifierDataSize, const void* qualifierData, std::uint32_t* outDataSize) {
  const std::string line = propertyCall("AudioObjectGetPropertyDataSize", object, address,
                                        qualifierDataSize, qualifierData) +
                           "from " + std::to_string(*outDataSize) + ")";
  CA::OSStatus status = statusOf(Call::processObjectListSize);
  if (object != CA::kAudioObjectSystemObject ||
      address.mSelector != CA::kAudioHardwarePropertyProcessObjectList) {
    status = CA::kAudioHardwareUnknownPropertyError;
  }
  if (status != 0) {
    *outDataSize = scribble;
    return journaled(line, status);
  }
  const std::size_t size = processObjects.size() * sizeof(CA::AudioObjectID);
  *outDataSize = processObjectListSize.value_or(static_cast<std::uint32_t>(size));
  return journaled(line, 0, ", " + std::to_string(*outDataSize) + " bytes");
}

CA::OSStatus FakeHardware::AudioObjectGetPropertyData(CA::AudioObjectID object,
                                                      const CA::AudioObjectPropertyAddress& address,
                                                      std::uint32_t qualifierDataSize,
                                                      const void* qualifierData,
                                                      std::uint32_t* ioDataSize, void* outData) {
  const std::string line = propertyCall("AudioObjectGetPropertyData", object, address,
                                        qualifierDataSize, qualifierData) +
                           "size " + std::to_string(*ioDataSize) + ")";
  const Answer answer = plainProperty(object, address.mSelector);
  if (answer.status != 0) {
    std::memset(outData, 0x5A, *ioDataSize);
    return journaled(line, answer.status);
  }
  const std::string_view before(static_cast<const char*>(outData), *ioDataSize);
  const bool leavesGarbage =
      answer.bytes.empty() && before.find_first_not_of('\0') != std::string_view::npos;
  *ioDataSize = std::min(*ioDataSize, static_cast<std::uint32_t>(answer.bytes.size()));
  std::memcpy(outData, answer.bytes.data(), *ioDataSize);
  return journaled(line, 0, ", " + answer.shown + (leavesGarbage ? ", not over 0" : ""));
}

CA::OSStatus FakeHardware::AudioObjectGetPropertyData(CA::AudioObjectID object,
                                                      const CA::AudioObjectPropertyAddress& address,
                                                      std::uint32_t qualifierDataSize,
                                                      const void* qualifierData,
                                                      std::uint32_t* ioDataSize,
                                                      std::string* outText) {
  const std::string line = propertyCall("AudioObjectGetPropertyData", object, address,
                                        qualifierDataSize, qualifierData) +
                           "size " + std::to_string(*ioDataSize) + ", text from " +
                           inQuotes(*outText) + ")";
  const Answer answer = textProperty(object, address.mSelector);
  if (answer.status != 0) {
    *outText = "scribble";
    return journaled(line, answer.status);
  }
  *outText = answer.bytes;
  return journaled(line, 0, ", " + inQuotes(answer.bytes));
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
