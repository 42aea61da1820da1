#include "discovery/ProcessDiscovery.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "platform/AppKit.h"
#include "platform/AudioObjectProperties.h"
#include "platform/Identity.h"
#include "platform/Log.h"

namespace audrel {
namespace {

void logFailure(os::Log& log, std::string_view what, CA::OSStatus status) {
  log.makeLogger(identity::bundleIdentifier, "discovery")
      ->error(std::string(what) + " failed: " + std::to_string(status));
}

std::vector<CA::AudioObjectID> processObjects(CA::AudioHardware& hardware, os::Log& log) {
  constexpr auto list = CA::kAudioHardwarePropertyProcessObjectList;
  std::uint32_t size = 0;
  const CA::OSStatus sizeStatus =
      CA::readPropertySize(hardware, CA::kAudioObjectSystemObject, list, &size);
  if (sizeStatus != CA::kAudioHardwareNoError || size == 0) {
    logFailure(log, "ProcessObjectList size query", sizeStatus);
    return {};
  }
  std::vector<CA::AudioObjectID> objects;
  const CA::OSStatus listStatus =
      CA::readProperty(hardware, CA::kAudioObjectSystemObject, list, size, &objects);
  if (listStatus != CA::kAudioHardwareNoError) {
    logFailure(log, "ProcessObjectList query", listStatus);
    return {};
  }
  return objects;
}

std::string displayName(NS::RunningApplications& applications, pid_t pid,
                        const std::optional<std::string>& bundleID) {
  const auto application = applications.runningApplication(pid);
  if (application && application->localizedName) {
    return *application->localizedName;
  }
  return bundleID.value_or("");
}

}  // namespace

std::vector<RecordingSource> ProcessDiscovery::audibleProcesses(const Platform& platform) {
  std::vector<RecordingSource> sources;
  for (RawProcessInfo& process : filter(platform.collation, rawProcesses(platform))) {
    sources.push_back(RecordingSource::process(
        process.audioObjectID, std::move(process.localizedName), std::move(process.bundleID)));
  }
  return sources;
}

std::vector<ProcessDiscovery::RawProcessInfo> ProcessDiscovery::rawProcesses(
    const Platform& platform) {
  CA::AudioHardware& hardware = platform.audioHardware;
  std::vector<RawProcessInfo> processes;
  for (const CA::AudioObjectID object : processObjects(hardware, platform.log)) {
    const pid_t pid = CA::processIdentifier(hardware, object);
    if (pid < 1) {
      continue;
    }
    auto bundleID = CA::bundleIdentifier(hardware, object);
    auto name = displayName(platform.runningApplications, pid, bundleID);
    processes.push_back({object, pid, std::move(bundleID), std::move(name)});
  }
  return processes;
}

std::vector<ProcessDiscovery::RawProcessInfo> ProcessDiscovery::filter(
    NS::Collation& collation, std::vector<RawProcessInfo> processes) {
  std::unordered_set<std::string> taken;
  std::vector<RawProcessInfo> kept;
  for (RawProcessInfo& process : processes) {
    const bool named = !process.localizedName.empty();
    if (named && (!process.bundleID || taken.insert(*process.bundleID).second)) {
      kept.push_back(std::move(process));
    }
  }
  std::stable_sort(kept.begin(), kept.end(),
                   [&collation](const RawProcessInfo& left, const RawProcessInfo& right) {
                     return collation.localizedCaseInsensitiveCompare(left.localizedName,
                                                                      right.localizedName) ==
                            NS::ComparisonResult::orderedAscending;
                   });
  return kept;
}

}  // namespace audrel
