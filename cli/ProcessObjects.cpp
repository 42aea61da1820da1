#include "cli/ProcessObjects.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

#include "cli/Json.h"
#include "cli/Table.h"
#include "discovery/ProcessDiscovery.h"
#include "platform/AppKit.h"
#include "platform/AudioObjectProperties.h"
#include "platform/Diagnostics.h"
#include "platform/Printable.h"

namespace audrel::cli {

namespace {

std::vector<CA::AudioObjectID> processObjects(CA::AudioHardware& hardware) {
  constexpr auto list = CA::kAudioHardwarePropertyProcessObjectList;
  std::uint32_t size = 0;
  std::vector<CA::AudioObjectID> objects;
  if (CA::readPropertySize(hardware, CA::kAudioObjectSystemObject, list, &size) !=
          CA::kAudioHardwareNoError ||
      CA::readProperty(hardware, CA::kAudioObjectSystemObject, list, size, &objects) !=
          CA::kAudioHardwareNoError) {
    return {};
  }
  return objects;
}

/// What tells two of one name apart: what it calls what it plays.
std::string playbackOf(const Recordable& recordable) {
  if (!recordable.playback.has_value()) {
    return "-";
  }
  const auto& [isRunning, title] = *recordable.playback;
  return isRunning ? printable(title.empty() ? "playing" : title) : "idle";
}

Row rowOf(const Recordable& recordable) {
  const auto& process = recordable.process;
  return {"#" + std::to_string(process.id),
          recordable.pid > 0 ? std::to_string(recordable.pid) : "-", printable(process.name),
          printable(process.bundleID.value_or("-")), playbackOf(recordable)};
}

}  // namespace

std::vector<Recordable> listedProcesses(const Platform& platform) {
  std::vector<Recordable> listed;
  for (const auto& source : ProcessDiscovery::audibleProcesses(platform)) {
    if (const auto* process = source.asProcess()) {
      listed.push_back({*process, CA::processIdentifier(platform.audioHardware, process->id),
                        platform.diagnostics.playback(process->id)});
    }
  }
  return listed;
}

std::vector<Recordable> allProcesses(const Platform& platform) {
  std::vector<Recordable> all;
  for (const auto id : processObjects(platform.audioHardware)) {
    const auto pid = CA::processIdentifier(platform.audioHardware, id);
    if (pid < 1) {
      continue;
    }
    auto bundleID = CA::bundleIdentifier(platform.audioHardware, id);
    const auto application = platform.runningApplications.runningApplication(pid);
    auto name = application.has_value() ? application->localizedName : std::nullopt;
    if (!name.has_value()) {
      name = bundleID.value_or("Process " + std::to_string(pid));
    }
    all.push_back({{id, *name, std::move(bundleID)}, pid, platform.diagnostics.playback(id)});
  }
  return all;
}

std::string tableOf(const std::vector<Recordable>& processes, std::optional<int> width) {
  std::vector<Row> rows = {{"ID", "PID", "NAME", "BUNDLE IDENTIFIER", "PLAYS"}};
  std::ranges::transform(processes, std::back_inserter(rows), rowOf);
  constexpr std::size_t idColumns = 2;
  return tableOf(rows, idColumns, width);
}

std::string jsonOf(const std::vector<Recordable>& processes) {
  std::string json = "[";
  for (const auto& [process, pid, playback] : processes) {
    json.append(json.size() > 1 ? ",\n  " : "\n  ")
        .append(jsonObject({{"id", std::to_string(process.id)},
                            {"pid", pid > 0 ? std::to_string(pid) : "null"},
                            {"name", jsonString(std::string_view(process.name))},
                            {"bundleIdentifier", jsonString(process.bundleID)},
                            {"playing", !playback.has_value() ? "null"
                                        : playback->isRunning ? "true"
                                                              : "false"},
                            {"title", playback.has_value() && !playback->title.empty()
                                          ? jsonString(std::string_view(playback->title))
                                          : "null"}}));
  }
  return json.append(processes.empty() ? "]" : "\n]");
}

}  // namespace audrel::cli
