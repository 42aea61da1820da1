#include "cli/ProcessObjects.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "discovery/ProcessDiscovery.h"
#include "platform/AppKit.h"
#include "platform/CoreAudio.h"

namespace audrel::cli {

namespace {

constexpr CA::AudioObjectPropertyAddress global(std::uint32_t selector) {
  return {selector, CA::kAudioObjectPropertyScopeGlobal, CA::kAudioObjectPropertyElementMain};
}

std::vector<CA::AudioObjectID> objectIDs(CA::AudioHardware& hardware) {
  const auto address = global(CA::kAudioHardwarePropertyProcessObjectList);
  std::uint32_t size = 0;
  if (hardware.AudioObjectGetPropertyDataSize(CA::kAudioObjectSystemObject, address, 0, nullptr,
                                              &size) != CA::kAudioHardwareNoError) {
    return {};
  }
  std::vector<CA::AudioObjectID> ids(size / sizeof(CA::AudioObjectID));
  size = static_cast<std::uint32_t>(ids.size() * sizeof(CA::AudioObjectID));
  if (ids.empty() ||
      hardware.AudioObjectGetPropertyData(CA::kAudioObjectSystemObject, address, 0, nullptr, &size,
                                          ids.data()) != CA::kAudioHardwareNoError) {
    return {};
  }
  ids.resize(size / sizeof(CA::AudioObjectID));
  return ids;
}

/// 0 when the object is gone.
pid_t processIdentifier(CA::AudioHardware& hardware, CA::AudioObjectID id) {
  pid_t pid = 0;
  std::uint32_t size = sizeof pid;
  const auto status = hardware.AudioObjectGetPropertyData(id, global(CA::kAudioProcessPropertyPID),
                                                          0, nullptr, &size, &pid);
  return status == CA::kAudioHardwareNoError ? pid : 0;
}

std::optional<std::string> bundleIdentifier(CA::AudioHardware& hardware, CA::AudioObjectID id) {
  std::string text;
  std::uint32_t size = sizeof(void*);
  const auto status = hardware.AudioObjectGetPropertyData(
      id, global(CA::kAudioProcessPropertyBundleID), 0, nullptr, &size, &text);
  if (status != CA::kAudioHardwareNoError || text.empty()) {
    return std::nullopt;
  }
  return text;
}

}  // namespace

std::vector<Recordable> listedProcesses(const Platform& platform) {
  std::vector<Recordable> listed;
  for (const auto& source : ProcessDiscovery::audibleProcesses(platform)) {
    if (const auto* process = source.asProcess()) {
      listed.push_back({*process, processIdentifier(platform.audioHardware, process->id)});
    }
  }
  return listed;
}

std::vector<Recordable> allProcesses(const Platform& platform) {
  std::vector<Recordable> all;
  for (const auto id : objectIDs(platform.audioHardware)) {
    const auto pid = processIdentifier(platform.audioHardware, id);
    if (pid < 1) {
      continue;
    }
    auto bundleID = bundleIdentifier(platform.audioHardware, id);
    const auto application = platform.runningApplications.runningApplication(pid);
    auto name = application.has_value() ? application->localizedName : std::nullopt;
    if (!name.has_value()) {
      name = bundleID.value_or("Process " + std::to_string(pid));
    }
    all.push_back({{id, *name, std::move(bundleID)}, pid});
  }
  return all;
}

}  // namespace audrel::cli
