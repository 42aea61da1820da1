#include "tests/macos/frameworks/FakeCoreAudio.h"

#import <CoreAudio/AudioHardwareTapping.h>
#import <CoreAudio/CATapDescription.h>
#import <CoreAudio/CoreAudio.h>
#import <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include "tests/macos/frameworks/FakeFoundation.h"
#include "tests/macos/frameworks/FakeMac.h"

using audrel::fakemac::described;
using audrel::fakemac::mac;

@implementation CATapDescription {
 @public
  std::string _log;  // what was set, in order
}
@synthesize name = _name;
@synthesize muteBehavior = _muteBehavior;

- (instancetype)initStereoMixdownOfProcesses:(NSArray<NSNumber*>*)processes {
  _log = "stereo mixdown of " + described(processes);
  return self;
}

- (instancetype)initStereoGlobalTapButExcludeProcesses:(NSArray<NSNumber*>*)processes {
  _log = "stereo global tap but " + described(processes);
  return self;
}

- (void)setName:(NSString*)name {
  _log += ", name = " + described(name);
}

- (void)setMuteBehavior:(CATapMuteBehavior)behavior {
  _log += ", muteBehavior = " + std::to_string(behavior);
}

- (void)setUUID:(NSUUID*)UUID {
  _log += ", UUID was set";
}

- (NSUUID*)UUID {
  return [NSUUID UUID];
}

- (void)setProcesses:(NSArray<NSNumber*>*)processes {
  _log += ", processes was set";
}

- (NSArray<NSNumber*>*)processes {
  return [NSMutableArray array];
}

- (void)setMono:(BOOL)mono {
  _log += ", mono was set";
}

- (void)setExclusive:(BOOL)exclusive {
  _log += ", exclusive was set";
}

- (void)setMixdown:(BOOL)mixdown {
  _log += ", mixdown was set";
}

- (void)setPrivate:(BOOL)isPrivate {
  _log += ", private was set";
}

@end

namespace {

struct IOProc {
  std::uint32_t number;
  AudioObjectID device;
  AudioDeviceIOProc procedure;
  void* clientData;
  bool isRunning = false;
};

/// Taps, or aggregate devices.
struct Objects {
  AudioObjectID next;
  std::set<AudioObjectID> existing;
};

struct Hardware {
  Objects taps = {101};
  Objects devices = {201};
  std::uint32_t nextIOProc = 1;
  std::vector<IOProc> ioProcs;
};
Hardware hardware;

/// Four letters.
std::string code(std::uint32_t packed) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    text += static_cast<char>(packed >> shift & 0xFF);
  }
  return text;
}

std::string number(std::int64_t value) {
  return std::to_string(value);
}

/// Notes a call, and what came of it: the status, and what it gave beside.
void note(const std::string& call, const std::string& arguments, OSStatus status,
          const std::string& given = "") {
  mac().note(call + "(" + arguments + ") -> " + number(status) +
             (status == kAudioHardwareNoError && !given.empty() ? ", " + given : ""));
}

OSStatus create(const std::string& call, const std::string& arguments, const std::string& kind,
                Objects& objects, AudioObjectID* out) {
  const OSStatus status = mac().statusOf(call);
  std::string given = "no " + kind;
  if (status == kAudioHardwareNoError && !mac().withoutResult.contains(call)) {
    objects.existing.insert(objects.next);
    *out = objects.next++;
    given = kind + " " + number(*out);
  }
  note(call, arguments, status, given);
  return status;
}

OSStatus destroy(const std::string& call, Objects& objects, AudioObjectID object) {
  objects.existing.erase(object);
  const OSStatus status = mac().statusOf(call);
  note(call, number(object), status);
  return status;
}

std::vector<IOProc>::iterator find(AudioObjectID device, AudioDeviceIOProcID id) {
  return std::find_if(hardware.ioProcs.begin(), hardware.ioProcs.end(), [=](const IOProc& ioProc) {
    return ioProc.device == device && ioProc.procedure == id;
  });
}

/// A device and its IO procedure, as arguments.
std::string place(AudioObjectID device, std::vector<IOProc>::iterator ioProc) {
  return number(device) + ", " +
         (ioProc == hardware.ioProcs.end() ? "an unknown ioProc"
                                           : "ioProc " + number(ioProc->number));
}

OSStatus setRunning(const std::string& call, AudioObjectID device, AudioDeviceIOProcID id,
                    bool isRunning) {
  const OSStatus status = mac().statusOf(call);
  const auto ioProc = find(device, id);
  note(call, place(device, ioProc), status);
  if (const auto happening = mac().happenings.find(call); happening != mac().happenings.end()) {
    happening->second();
  }
  if (ioProc != hardware.ioProcs.end() && status == kAudioHardwareNoError) {
    ioProc->isRunning = isRunning;
  }
  return status;
}

AudioStreamBasicDescription tapFormat() {
  const UInt32 frame = mac().isInterleaved ? 8 : 4;
  const UInt32 flags = kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked |
                       (mac().isInterleaved ? 0U : kAudioFormatFlagIsNonInterleaved);
  return {48000, mac().tapFormatID, flags, frame, 1, frame, 2, 32, /*reserved*/ 0};
}

template <typename Value>
void give(const Value& value, UInt32* ioSize, void* out) {
  std::memcpy(out, &value, std::min<std::size_t>(*ioSize, sizeof value));
  *ioSize = sizeof value;
}

/// One reference, which the caller owns. Here and below: what is given, as the journal tells it.
std::string giveText(const std::string& text, UInt32* ioSize, void* out) {
  NSString* string = audrel::fakemac::made(text);
  give((__bridge_retained const void*)string, ioSize, out);
  return described(string);
}

std::string giveNumber(const std::string& kind, std::uint32_t value, UInt32* ioSize, void* out) {
  give(value, ioSize, out);
  return kind + " " + number(value);
}

const audrel::fakemac::Process* process(AudioObjectID object) {
  for (const auto& process : mac().processes) {
    if (process.object == object) {
      return &process;
    }
  }
  return nullptr;
}

std::string giveProcesses(UInt32* ioSize, void* out) {
  auto* to = static_cast<AudioObjectID*>(out);
  std::string given;
  for (const auto& one : mac().processes) {
    *to++ = one.object;
    given += (given.empty() ? "objects " : ", ") + number(one.object);
  }
  *ioSize = static_cast<UInt32>(mac().processes.size() * sizeof(AudioObjectID));
  return given;
}

/// Nothing for a property that no object has.
std::optional<std::string> giveProperty(AudioObjectID object, UInt32 selector, UInt32* ioSize,
                                        void* out) {
  switch (selector) {
    case kAudioTapPropertyUID:
      return giveText("tap-" + number(object), ioSize, out);
    case kAudioTapPropertyFormat:
      give(tapFormat(), ioSize, out);
      return described(tapFormat());
    case kAudioHardwarePropertyDefaultOutputDevice:
      return giveNumber("device", mac().defaultOutput, ioSize, out);
    case kAudioDevicePropertyDeviceUID:
      return giveText("output-" + number(object), ioSize, out);
    case kAudioProcessPropertyPID:
      return giveNumber("pid", static_cast<std::uint32_t>(process(object)->pid), ioSize, out);
    case kAudioProcessPropertyBundleID:
      return giveText(process(object)->bundleID, ioSize, out);
    case kAudioHardwarePropertyProcessObjectList:
      return giveProcesses(ioSize, out);
    default:
      return std::nullopt;
  }
}

std::string place(AudioObjectID object, const AudioObjectPropertyAddress& address,
                  UInt32 qualifierSize) {
  return number(object) + ", " + code(address.mSelector) + "/" + code(address.mScope) + "/" +
         number(address.mElement) + ", " +
         (qualifierSize == 0 ? "no qualifier" : "a qualifier of " + number(qualifierSize));
}

}  // namespace

OSStatus AudioHardwareCreateProcessTap(CATapDescription* inDescription, AudioObjectID* outTapID) {
  return create("AudioHardwareCreateProcessTap", inDescription->_log, "tap", hardware.taps,
                outTapID);
}

OSStatus AudioHardwareDestroyProcessTap(AudioObjectID inTapID) {
  return destroy("AudioHardwareDestroyProcessTap", hardware.taps, inTapID);
}

OSStatus AudioHardwareCreateAggregateDevice(CFDictionaryRef inDescription,
                                            AudioObjectID* outDeviceID) {
  return create("AudioHardwareCreateAggregateDevice", described((__bridge id)inDescription),
                "device", hardware.devices, outDeviceID);
}

OSStatus AudioHardwareDestroyAggregateDevice(AudioObjectID inDeviceID) {
  return destroy("AudioHardwareDestroyAggregateDevice", hardware.devices, inDeviceID);
}

OSStatus AudioDeviceCreateIOProcID(AudioObjectID inDevice, AudioDeviceIOProc inProc,
                                   void* inClientData, AudioDeviceIOProcID* outIOProcID) {
  const std::string call = "AudioDeviceCreateIOProcID";
  const OSStatus status = mac().statusOf(call);
  std::string given = "no ioProc";
  if (status == kAudioHardwareNoError && !mac().withoutResult.contains(call)) {
    hardware.ioProcs.push_back({hardware.nextIOProc, inDevice, inProc, inClientData});
    *outIOProcID = inProc;
    given = "ioProc " + number(hardware.nextIOProc++);
  }
  note(call, number(inDevice), status, given);
  return status;
}

OSStatus AudioDeviceDestroyIOProcID(AudioObjectID inDevice, AudioDeviceIOProcID inIOProcID) {
  const std::string call = "AudioDeviceDestroyIOProcID";
  const OSStatus status = mac().statusOf(call);
  const auto ioProc = find(inDevice, inIOProcID);
  note(call, place(inDevice, ioProc), status);
  if (ioProc != hardware.ioProcs.end() && status == kAudioHardwareNoError) {
    hardware.ioProcs.erase(ioProc);
  }
  return status;
}

OSStatus AudioDeviceStart(AudioObjectID inDevice, AudioDeviceIOProcID inProcID) {
  return setRunning("AudioDeviceStart", inDevice, inProcID, true);
}

OSStatus AudioDeviceStop(AudioObjectID inDevice, AudioDeviceIOProcID inProcID) {
  return setRunning("AudioDeviceStop", inDevice, inProcID, false);
}

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID inObjectID,
                                        const AudioObjectPropertyAddress* inAddress,
                                        UInt32 inQualifierDataSize, const void*,
                                        UInt32* outDataSize) {
  const std::string call = "AudioObjectGetPropertyDataSize";
  const OSStatus status = mac().statusOf(call);
  const std::size_t size = mac().processes.size() * sizeof(AudioObjectID);
  if (status == kAudioHardwareNoError) {
    *outDataSize = static_cast<UInt32>(size);
  }
  note(call, place(inObjectID, *inAddress, inQualifierDataSize), status,
       std::to_string(size) + " bytes");
  return status;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID,
                                    const AudioObjectPropertyAddress* inAddress,
                                    UInt32 inQualifierDataSize, const void*, UInt32* ioDataSize,
                                    void* outData) {
  const std::string arguments =
      place(inObjectID, *inAddress, inQualifierDataSize) + ", " + number(*ioDataSize) + " bytes";
  const auto failing = mac().failingProperties.find(inAddress->mSelector);
  OSStatus status = kAudioHardwareNoError;
  std::optional<std::string> given;
  if (failing != mac().failingProperties.end()) {
    status = failing->second;
  } else {
    given = giveProperty(inObjectID, inAddress->mSelector, ioDataSize, outData);
    status = given ? kAudioHardwareNoError : kAudioHardwareUnknownPropertyError;
  }
  note("AudioObjectGetPropertyData", arguments, status, given.value_or(""));
  return status;
}

bool CGPreflightScreenCaptureAccess() {
  mac().note(std::string("CGPreflightScreenCaptureAccess() -> ") +
             (mac().mayCapture ? "true" : "false"));
  return mac().mayCapture;
}

bool CGRequestScreenCaptureAccess() {
  mac().note(std::string("CGRequestScreenCaptureAccess() -> ") +
             (mac().answersRequest ? "true" : "false"));
  return mac().answersRequest;
}

namespace audrel::fakemac {

std::string described(const AudioStreamBasicDescription& format) {
  std::ostringstream rate;
  rate << format.mSampleRate;
  return (format.mFormatID == 0 ? "0" : code(format.mFormatID)) + " at " + rate.str() + " Hz, " +
         number(format.mChannelsPerFrame) + " channels, " + number(format.mBytesPerFrame) +
         " bytes a frame";
}

std::int32_t deliver(const std::vector<std::vector<std::byte>>& buffers,
                     std::uint32_t bytesWithoutData) {
  // As large as the list is, and no larger.
  const std::size_t size =
      offsetof(AudioBufferList, mBuffers) + buffers.size() * sizeof(AudioBuffer);
  std::vector<std::max_align_t> storage(size / sizeof(std::max_align_t) + 1);
  auto* list = reinterpret_cast<AudioBufferList*>(storage.data());
  list->mNumberBuffers = static_cast<UInt32>(buffers.size());
  for (std::size_t i = 0; i < buffers.size(); ++i) {
    const auto& bytes = buffers[i];
    auto* data = const_cast<std::byte*>(bytes.data());
    const auto length = static_cast<UInt32>(bytes.size());
    (&list->mBuffers[0])[i] =
        bytes.empty() ? AudioBuffer{1, bytesWithoutData, nullptr} : AudioBuffer{1, length, data};
  }
  ::OSStatus highest = 0;
  std::thread([&] {
    for (const IOProc& ioProc : hardware.ioProcs) {
      if (ioProc.isRunning) {
        const AudioTimeStamp time{};
        highest = std::max(highest, ioProc.procedure(ioProc.device, &time, list, &time, nullptr,
                                                     &time, ioProc.clientData));
      }
    }
  }).join();
  return highest;
}

std::function<std::int32_t()> cycleAtAnyTime() {
  return [ioProcs = hardware.ioProcs] {
    std::byte bytes[8] = {};
    const AudioBufferList list = {1, {{1, sizeof bytes, bytes}}};
    const AudioTimeStamp time{};
    ::OSStatus highest = 0;
    for (const IOProc& ioProc : ioProcs) {
      highest = std::max(highest, ioProc.procedure(ioProc.device, &time, &list, &time, nullptr,
                                                   &time, ioProc.clientData));
    }
    return highest;
  };
}

std::vector<std::uint32_t> taps() {
  return {hardware.taps.existing.begin(), hardware.taps.existing.end()};
}

std::vector<std::uint32_t> aggregateDevices() {
  return {hardware.devices.existing.begin(), hardware.devices.existing.end()};
}

std::size_t installedIOProcs() {
  return hardware.ioProcs.size();
}

std::size_t hardwareObjects() {
  return taps().size() + aggregateDevices().size() + installedIOProcs();
}

void resetHardware() {
  hardware = {};
}

}  // namespace audrel::fakemac
