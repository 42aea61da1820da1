#include "tests/macos/frameworks/FakeCoreAudio.h"

#import <CoreAudio/AudioHardwareTapping.h>
#import <CoreAudio/CATapDescription.h>
#import <CoreAudio/CoreAudio.h>
#import <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <cstring>
#include <set>
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
  AudioObjectID device;
  AudioDeviceIOProc procedure;
  void* clientData;
  bool isRunning = false;
};

struct Hardware {
  AudioObjectID nextTap = 101;
  AudioObjectID nextDevice = 201;
  std::set<AudioObjectID> objects;
  std::vector<IOProc> ioProcs;
};
Hardware hardware;

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

/// Notes a call and answers what the test has it answer.
OSStatus answer(const std::string& call, const std::string& arguments) {
  const OSStatus status = mac().statusOf(call);
  mac().note(call + "(" + arguments + ") -> " + number(status));
  return status;
}

OSStatus create(const std::string& call, const std::string& arguments, AudioObjectID& next,
                AudioObjectID* out) {
  const OSStatus status = answer(call, arguments);
  if (status == kAudioHardwareNoError && !mac().withoutResult.contains(call)) {
    hardware.objects.insert(next);
    *out = next++;
  }
  return status;
}

OSStatus destroy(const std::string& call, AudioObjectID object) {
  hardware.objects.erase(object);
  return answer(call, number(object));
}

std::vector<IOProc>::iterator find(AudioObjectID device, AudioDeviceIOProcID id) {
  return std::find_if(hardware.ioProcs.begin(), hardware.ioProcs.end(), [=](const IOProc& ioProc) {
    return ioProc.device == device && ioProc.procedure == id;
  });
}

OSStatus setRunning(const std::string& call, AudioObjectID device, AudioDeviceIOProcID id,
                    bool isRunning) {
  const OSStatus status = answer(call, number(device));
  const auto ioProc = find(device, id);
  if (ioProc != hardware.ioProcs.end() && status == kAudioHardwareNoError) {
    ioProc->isRunning = isRunning;
  }
  return status;
}

AudioStreamBasicDescription tapFormat() {
  const UInt32 sample = sizeof(float);
  const UInt32 frame = mac().isInterleaved ? sample * mac().channels : sample;
  const UInt32 flags = kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked |
                       (mac().isInterleaved ? 0U : kAudioFormatFlagIsNonInterleaved);
  return {mac().sampleRate, mac().tapFormatID, flags,         frame, 1, frame,
          mac().channels,   8 * sample,        /*reserved*/ 0};
}

template <typename Value>
void give(const Value& value, UInt32* ioSize, void* out) {
  std::memcpy(out, &value, std::min<std::size_t>(*ioSize, sizeof value));
  *ioSize = sizeof value;
}

/// One reference, which the caller owns.
void giveText(const std::string& text, UInt32* ioSize, void* out) {
  NSString* string = [[NSString alloc] initWithBytes:text.data()
                                              length:text.size()
                                            encoding:NSUTF8StringEncoding];
  give((__bridge_retained const void*)string, ioSize, out);
}

const audrel::fakemac::Process* process(AudioObjectID object) {
  for (const auto& process : mac().processes) {
    if (process.object == object) {
      return &process;
    }
  }
  return nullptr;
}

OSStatus giveProperty(AudioObjectID object, UInt32 selector, UInt32* ioSize, void* out) {
  switch (selector) {
    case kAudioTapPropertyUID:
      giveText("tap-" + number(object), ioSize, out);
      return kAudioHardwareNoError;
    case kAudioTapPropertyFormat:
      give(tapFormat(), ioSize, out);
      return kAudioHardwareNoError;
    case kAudioHardwarePropertyDefaultOutputDevice:
      give(mac().defaultOutput, ioSize, out);
      return kAudioHardwareNoError;
    case kAudioDevicePropertyDeviceUID:
      giveText("output-" + number(object), ioSize, out);
      return kAudioHardwareNoError;
    case kAudioProcessPropertyPID:
      give(process(object)->pid, ioSize, out);
      return kAudioHardwareNoError;
    case kAudioProcessPropertyBundleID:
      giveText(process(object)->bundleID, ioSize, out);
      return kAudioHardwareNoError;
    case kAudioHardwarePropertyProcessObjectList: {
      auto* to = static_cast<AudioObjectID*>(out);
      const auto& all = mac().processes;
      *ioSize = static_cast<UInt32>(all.size() * sizeof(AudioObjectID));
      std::transform(all.begin(), all.end(), to, [](const auto& one) { return one.object; });
      return kAudioHardwareNoError;
    }
    default:
      return kAudioHardwareUnknownPropertyError;
  }
}

std::string place(AudioObjectID object, const AudioObjectPropertyAddress& address) {
  return number(object) + ", " + code(address.mSelector) + "/" + code(address.mScope) + "/" +
         number(address.mElement);
}

}  // namespace

OSStatus AudioHardwareCreateProcessTap(CATapDescription* inDescription, AudioObjectID* outTapID) {
  return create("AudioHardwareCreateProcessTap", inDescription->_log, hardware.nextTap, outTapID);
}

OSStatus AudioHardwareDestroyProcessTap(AudioObjectID inTapID) {
  return destroy("AudioHardwareDestroyProcessTap", inTapID);
}

OSStatus AudioHardwareCreateAggregateDevice(CFDictionaryRef inDescription,
                                            AudioObjectID* outDeviceID) {
  return create("AudioHardwareCreateAggregateDevice", described((__bridge id)inDescription),
                hardware.nextDevice, outDeviceID);
}

OSStatus AudioHardwareDestroyAggregateDevice(AudioObjectID inDeviceID) {
  return destroy("AudioHardwareDestroyAggregateDevice", inDeviceID);
}

OSStatus AudioDeviceCreateIOProcID(AudioObjectID inDevice, AudioDeviceIOProc inProc,
                                   void* inClientData, AudioDeviceIOProcID* outIOProcID) {
  const OSStatus status = answer("AudioDeviceCreateIOProcID", number(inDevice));
  if (status == kAudioHardwareNoError &&
      !mac().withoutResult.contains("AudioDeviceCreateIOProcID")) {
    hardware.ioProcs.push_back({inDevice, inProc, inClientData});
    *outIOProcID = inProc;
  }
  return status;
}

OSStatus AudioDeviceDestroyIOProcID(AudioObjectID inDevice, AudioDeviceIOProcID inIOProcID) {
  const OSStatus status = answer("AudioDeviceDestroyIOProcID", number(inDevice));
  if (const auto ioProc = find(inDevice, inIOProcID);
      ioProc != hardware.ioProcs.end() && status == kAudioHardwareNoError) {
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
                                        const AudioObjectPropertyAddress* inAddress, UInt32,
                                        const void*, UInt32* outDataSize) {
  const OSStatus status = answer("AudioObjectGetPropertyDataSize", place(inObjectID, *inAddress));
  if (status == kAudioHardwareNoError) {
    *outDataSize = static_cast<UInt32>(mac().processes.size() * sizeof(AudioObjectID));
  }
  return status;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID,
                                    const AudioObjectPropertyAddress* inAddress, UInt32,
                                    const void*, UInt32* ioDataSize, void* outData) {
  const auto failing = mac().failingProperties.find(inAddress->mSelector);
  const UInt32 room = *ioDataSize;
  const OSStatus status = failing != mac().failingProperties.end()
                              ? failing->second
                              : giveProperty(inObjectID, inAddress->mSelector, ioDataSize, outData);
  mac().note("AudioObjectGetPropertyData(" + place(inObjectID, *inAddress) + ", " + number(room) +
             " bytes) -> " + number(status));
  return status;
}

bool CGPreflightScreenCaptureAccess() {
  mac().note(std::string("CGPreflightScreenCaptureAccess -> ") +
             (mac().mayCapture ? "true" : "false"));
  return mac().mayCapture;
}

bool CGRequestScreenCaptureAccess() {
  mac().note(std::string("CGRequestScreenCaptureAccess -> ") +
             (mac().answersRequest ? "true" : "false"));
  return mac().answersRequest;
}

namespace audrel::fakemac {

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

std::size_t hardwareObjects() {
  return hardware.objects.size() + hardware.ioProcs.size();
}

void resetHardware() {
  hardware = {};
}

}  // namespace audrel::fakemac
