#include "tests/architecture/IncludeRules.h"

#include <algorithm>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <utility>

namespace audrel::architecture {
namespace {

/// The rooms of the house. Every system's folder is a room of its own; the interfaces are one.
const std::string interfaces = "platform/*.h";
const std::string factory = "platform/NativePlatform.h";

const std::map<std::string, std::set<std::string>> mayInclude = {
    {"model", {interfaces}},
    {"engine", {"model", interfaces}},
    {"discovery", {"model", interfaces}},
    {"ui", {"model", interfaces}},
    {"app", {"model", "engine", "discovery", "ui", interfaces}},
    {"cli", {"model", "engine", "discovery", "ui", "app", interfaces}},
    {interfaces, {}},
    {"platform/linux", {interfaces}},
    {"platform/macos", {interfaces}},
};

const std::set<std::string> portable = {"model", "engine", "discovery", "ui", "app", "cli"};
const std::set<std::string> standardLibraryAlone = {"model", "engine", "discovery", "ui"};

std::string room(const std::string& path) {
  const auto slash = path.find('/');
  std::string first = path.substr(0, slash);
  if (first != "platform" || slash == std::string::npos) {
    return first;
  }
  const auto second = path.find('/', slash + 1);
  return second == std::string::npos ? interfaces : path.substr(0, second);
}

bool mayEverything(const std::string& room) {
  return room == "tests" || room == "bench";
}

bool isMain(const std::string& path) {
  return path == "app/main.cpp" || path == "cli/main.cpp";
}

/// Why a file of the project may not include another one.
std::optional<std::string> objectionToOwn(const std::string& from, const std::string& included) {
  const std::string own = room(from);
  const std::string other = room(included);
  if (mayEverything(own)) {
    return std::nullopt;
  }
  const auto rule = mayInclude.find(own);
  if (rule == mayInclude.end()) {
    return "is in no known room";
  }
  if (included == factory && portable.contains(own) && !isMain(from)) {
    return "only a main.cpp may include " + included;
  }
  if (other != own && !rule->second.contains(other)) {
    return own + " may not include " + included;
  }
  return std::nullopt;
}

/// Why a file may not include a header of the system.
std::optional<std::string> objectionToForeign(const std::string& from, const std::string& header) {
  static const std::regex standard("[a-z_]+");
  if (standardLibraryAlone.contains(room(from)) && header != "sys/types.h" &&
      !std::regex_match(header, standard)) {
    return room(from) + " lives on the standard library alone, but includes <" + header + ">";
  }
  return std::nullopt;
}

std::optional<std::string> objectionToMacro(const std::string& from, const std::string& line) {
  static const std::regex macro(
      R"(^\s*#\s*(?:if|elif|ifdef|ifndef|elifdef|elifndef)\b.*\b(__APPLE__|__MACH__|TARGET_OS_\w+|__linux__|__linux|linux|__gnu_linux__|__unix__|__FreeBSD__|_WIN32|__ANDROID__)\b.*)");
  std::smatch match;
  if (portable.contains(room(from)) && std::regex_match(line, match, macro)) {
    return room(from) + " is portable, but asks for " + match[1].str();
  }
  return std::nullopt;
}

std::optional<std::string> objectionToLine(const std::string& path, const std::string& line) {
  static const std::regex own(R"(^\s*#\s*(?:include|import)\s*"([^"]*)\".*)");
  static const std::regex foreign(R"(^\s*#\s*(?:include|import)\s*<([^>]*)>.*)");
  const auto first = line.find_first_not_of(" \t");
  if (first == std::string::npos || line[first] != '#') {
    return std::nullopt;
  }
  std::smatch match;
  if (std::regex_match(line, match, own)) {
    return objectionToOwn(path, match[1].str());
  }
  if (std::regex_match(line, match, foreign)) {
    return objectionToForeign(path, match[1].str());
  }
  return objectionToMacro(path, line);
}

}  // namespace

std::vector<std::string> violations(const Source& source) {
  std::vector<std::string> found;
  std::istringstream lines(source.text);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (const auto objection = objectionToLine(source.path, line)) {
      found.push_back(source.path + ":" + std::to_string(number) + ": " + *objection);
    }
  }
  return found;
}

}  // namespace audrel::architecture
