#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/CoreAudio.h"

/// How the program reads the properties of audio objects, in their global scope and main element.
/// What a failed read leaves in its destination does not count.
namespace CA {

constexpr AudioObjectPropertyAddress globalAddress(std::uint32_t selector) {
  return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};
}

/// Plain data, of the size of `Value`. Starts from what stands there: the system may write less.
template <typename Value>
OSStatus readProperty(AudioHardware& hardware, AudioObjectID object, std::uint32_t selector,
                      Value* value) {
  static_assert(std::is_trivially_copyable_v<Value>);
  std::uint32_t size = sizeof *value;
  return hardware.AudioObjectGetPropertyData(object, globalAddress(selector), 0, nullptr, &size,
                                             value);
}

/// A text, in UTF-8.
inline OSStatus readProperty(AudioHardware& hardware, AudioObjectID object, std::uint32_t selector,
                             std::string* text) {
  std::uint32_t size = 8;  // of the one reference that the system hands over
  return hardware.AudioObjectGetPropertyData(object, globalAddress(selector), 0, nullptr, &size,
                                             text);
}

/// How large a list is now, in bytes: what to read it by.
inline OSStatus readPropertySize(AudioHardware& hardware, AudioObjectID object,
                                 std::uint32_t selector, std::uint32_t* size) {
  return hardware.AudioObjectGetPropertyDataSize(object, globalAddress(selector), 0, nullptr, size);
}

/// A list of ids that is `size` bytes long. Zeros stand for those that have gone since it was.
inline OSStatus readProperty(AudioHardware& hardware, AudioObjectID object, std::uint32_t selector,
                             std::uint32_t size, std::vector<AudioObjectID>* ids) {
  // Room for all of the size, also when it is no multiple of an id's; whole ids alone count.
  const std::uint32_t count = size / sizeof(AudioObjectID);
  ids->assign(std::size_t{count} + 1, kAudioObjectUnknown);
  const OSStatus status = hardware.AudioObjectGetPropertyData(object, globalAddress(selector), 0,
                                                              nullptr, &size, ids->data());
  ids->resize(count);
  return status;
}

/// Of a process object; 0 when it is gone.
inline pid_t processIdentifier(AudioHardware& hardware, AudioObjectID process) {
  pid_t pid = 0;
  const auto status = readProperty(hardware, process, kAudioProcessPropertyPID, &pid);
  return status == kAudioHardwareNoError ? pid : 0;
}

/// Of a process object; nothing when it has none, or is gone.
inline std::optional<std::string> bundleIdentifier(AudioHardware& hardware, AudioObjectID process) {
  std::string text;
  const auto status = readProperty(hardware, process, kAudioProcessPropertyBundleID, &text);
  if (status != kAudioHardwareNoError || text.empty()) {
    return std::nullopt;
  }
  return text;
}

}  // namespace CA
