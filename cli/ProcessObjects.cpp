#include "cli/ProcessObjects.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

#include "cli/Json.h"
#include "discovery/ProcessDiscovery.h"
#include "platform/AppKit.h"
#include "platform/AudioObjectProperties.h"
#include "platform/Printable.h"
#include "platform/Utf8.h"

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

/// 0 when the object is gone.
pid_t processIdentifier(CA::AudioHardware& hardware, CA::AudioObjectID object) {
  pid_t pid = 0;
  const auto status = CA::readProperty(hardware, object, CA::kAudioProcessPropertyPID, &pid);
  return status == CA::kAudioHardwareNoError ? pid : 0;
}

std::optional<std::string> bundleIdentifier(CA::AudioHardware& hardware, CA::AudioObjectID object) {
  std::string text;
  const auto status = CA::readProperty(hardware, object, CA::kAudioProcessPropertyBundleID, &text);
  if (status != CA::kAudioHardwareNoError || text.empty()) {
    return std::nullopt;
  }
  return text;
}

using Row = std::array<std::string, 4>;

Row rowOf(const Recordable& recordable) {
  const auto& process = recordable.process;
  return {"#" + std::to_string(process.id),
          recordable.pid > 0 ? std::to_string(recordable.pid) : "-", printable(process.name),
          printable(process.bundleID.value_or("-"))};
}

/// Characters, which on most terminals are columns: bytes that begin one.
std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

constexpr std::size_t columnGap = 2;

using Widths = std::array<std::size_t, 4>;

/// `width` characters of `text` at most.
std::string cut(const std::string& text, std::size_t width) {
  if (widthOf(text) <= width) {
    return text;
  }
  std::string shown;
  for (std::string_view rest = text; widthOf(shown) + 1 < width;) {
    const auto size = firstCharacter(rest).size;
    shown += rest.substr(0, size);
    rest.remove_prefix(size);
  }
  return shown + "…";
}

/// Takes from the name and the identifier what `room` lacks: each has half of what is left for
/// both, and what the other does not need.
void fitInto(Widths& widths, std::size_t room) {
  auto& [id, pid, name, identifier] = widths;
  const std::size_t taken = id + pid + 3 * columnGap;
  const std::size_t left = std::max(room, taken + 2) - taken;
  if (name + identifier > left) {
    name = std::min(name, std::max(left / 2, left - std::min(left, identifier)));
    identifier = std::min(identifier, left - name);
  }
}

std::string lineOf(const Row& row, const Widths& widths) {
  std::string line;
  std::size_t spaces = 0;
  for (std::size_t column = 0; column < widths.size(); ++column) {
    const auto text = cut(row.at(column), widths.at(column));
    line.append(spaces, ' ').append(text);
    spaces = widths.at(column) - widthOf(text) + columnGap;
  }
  return line.append("\n");
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
  for (const auto id : processObjects(platform.audioHardware)) {
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

std::string tableOf(const std::vector<Recordable>& processes, std::optional<int> width) {
  std::vector<Row> rows = {{"ID", "PID", "NAME", "BUNDLE IDENTIFIER"}};
  std::ranges::transform(processes, std::back_inserter(rows), rowOf);
  Widths widths{};
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      widths.at(column) = std::max(widths.at(column), widthOf(row.at(column)));
    }
  }
  if (width.has_value()) {
    fitInto(widths, static_cast<std::size_t>(std::max(*width, 0)));
  }
  std::string table;
  for (const auto& row : rows) {
    table += lineOf(row, widths);
  }
  return table;
}

std::string jsonOf(const std::vector<Recordable>& processes) {
  std::string json = "[";
  for (const auto& [process, pid] : processes) {
    json.append(json.size() > 1 ? ",\n  " : "\n  ")
        .append(jsonObject({{"id", std::to_string(process.id)},
                            {"pid", pid > 0 ? std::to_string(pid) : "null"},
                            {"name", jsonString(std::string_view(process.name))},
                            {"bundleIdentifier", jsonString(process.bundleID)}}));
  }
  return json.append(processes.empty() ? "]" : "\n]");
}

}  // namespace audrel::cli
