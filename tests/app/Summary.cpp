#include "tests/app/Summary.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace audrel {
namespace {

using Lines = std::span<const std::string>;

std::string between(const std::string& line, const std::string& before, const std::string& after) {
  const std::size_t begin = line.find(before) + before.size();
  return line.substr(begin, line.find(after, begin) - begin);
}

std::string drawing(Lines lines) {
  std::string text = "draws " + between(lines.front(), "(\"", "\")");
  for (const std::string& line : lines) {
    if (line.ends_with("Color.set()")) {
      text += " " + between(line, "system", "Color");
    }
  }
  return text + " " + between(lines.back(), "= ", "\n");
}

struct Block {
  const char* first;
  const char* last;
  std::string (*summary)(Lines);
};

const std::vector<Block>& blocks() {
  static const std::vector<Block> all{
      {"AudioHardwareCreateProcessTap(",
       "log io.github.audrel.Audrel [engine] info: Recording started",
       [](Lines) -> std::string { return "engine starts"; }},
      {"AudioDeviceStop(", "log io.github.audrel.Audrel [engine] info: Recording stopped",
       [](Lines) -> std::string { return "engine stops"; }},
      {"imageWithSystemSymbolName(", "button.title = ", drawing},
      {"NSMenu() -> ",
       "statusItem.menu = ", [](Lines) -> std::string { return "attaches a new menu"; }},
  };
  return all;
}

/// How many of the lines a block takes, from the first; 0 when it does not begin or end here.
std::size_t lengthOf(const Block& block, Lines lines) {
  if (!lines.front().starts_with(block.first)) {
    return 0;
  }
  const auto last = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
    return line.starts_with(block.last);
  });
  return last == lines.end() ? 0 : static_cast<std::size_t>(last - lines.begin()) + 1;
}

}  // namespace

std::vector<std::string> summaryOf(const std::vector<std::string>& journal) {
  std::vector<std::string> summary;
  for (Lines rest = journal; !rest.empty();) {
    std::size_t taken = 1;
    std::string line = rest.front();
    for (const Block& block : blocks()) {
      if (const std::size_t length = lengthOf(block, rest)) {
        taken = length;
        line = block.summary(rest.first(length));
      }
    }
    summary.push_back(line);
    rest = rest.subspan(taken);
  }
  return summary;
}

}  // namespace audrel
