#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "cli/Json.h"
#include "cli/ProcessObjects.h"
#include "platform/Printable.h"

namespace audrel::cli {

namespace {

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

std::string lineOf(const Row& row, const std::array<std::size_t, 3>& widths) {
  std::string line;
  for (std::size_t column = 0; column < widths.size(); ++column) {
    const auto& text = row.at(column);
    line.append(text).append(widths.at(column) - widthOf(text) + 2, ' ');
  }
  return line.append(row.back()).append("\n");
}

}  // namespace

std::string tableOf(const std::vector<Recordable>& processes) {
  std::vector<Row> rows = {{"ID", "PID", "NAME", "BUNDLE IDENTIFIER"}};
  std::ranges::transform(processes, std::back_inserter(rows), rowOf);
  std::array<std::size_t, 3> widths{};
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      widths.at(column) = std::max(widths.at(column), widthOf(row.at(column)));
    }
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
