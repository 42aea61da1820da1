#include "platform/linux/pipewire/ProcFiles.h"

#include <glib.h>
#include <sys/stat.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <system_error>

#include "platform/linux/system/ForeignFile.h"

namespace audrel::linuxos::proc {

namespace {

std::string folder(pid_t pid) {
  return "/proc/" + std::to_string(pid);
}

std::string contents(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::string firstLine(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

struct KeyFileRelease {
  void operator()(GKeyFile* file) const { g_key_file_unref(file); }
};
struct Free {
  void operator()(gpointer memory) const { g_free(memory); }
};

/// Undoes the escapes of systemd unit names (`\x2d`).
std::string unescaped(const std::string& escaped) {
  std::string plain;
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    unsigned code = 0;
    const char* digits = escaped.c_str() + i + 2;
    if (escaped.compare(i, 2, "\\x") == 0 && i + 4 <= escaped.size() &&
        std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2) {
      plain += static_cast<char>(code);
      i += 3;
    } else {
      plain += escaped[i];
    }
  }
  return plain;
}

}  // namespace

std::optional<std::uint64_t> startTime(pid_t pid) {
  const std::string stat = contents(folder(pid) + "/stat");
  // The command's name is in parentheses and may hold any character.
  const auto nameEnd = stat.rfind(')');
  if (nameEnd == std::string::npos) {
    return std::nullopt;
  }
  constexpr int startTimeField = 22;
  std::istringstream rest(stat.substr(nameEnd + 1));
  std::string field;
  rest >> field;
  if (field == "Z") {
    return std::nullopt;
  }
  for (int number = 4; number <= startTimeField; ++number) {
    rest >> field;
  }
  std::uint64_t ticks = 0;
  const auto parsed = std::from_chars(field.data(), field.data() + field.size(), ticks);
  return parsed.ec == std::errc() ? std::optional(ticks) : std::nullopt;
}

std::string executable(pid_t pid) {
  std::error_code error;
  std::string path = std::filesystem::read_symlink(folder(pid) + "/exe", error).string();
  constexpr std::string_view replaced = " (deleted)";
  if (path.ends_with(replaced)) {
    path.resize(path.size() - replaced.size());
  }
  return path;
}

bool runsSystemProgram(pid_t pid, std::string_view name) {
  struct stat program{};
  return std::filesystem::path(executable(pid)).filename() == name &&
         stat((folder(pid) + "/exe").c_str(), &program) == 0 && program.st_uid == 0 &&
         flatpakApplication(pid).empty();
}

std::string commandName(pid_t pid) {
  return firstLine(folder(pid) + "/comm");
}

std::string flatpakApplication(pid_t pid) {
  constexpr std::size_t largest = 64 * 1024;
  const auto info = readForeignFileIn(folder(pid) + "/root", ".flatpak-info", largest).text;
  if (!info) {
    return {};
  }
  const std::unique_ptr<GKeyFile, KeyFileRelease> file(g_key_file_new());
  if (g_key_file_load_from_data(file.get(), info->data(), info->size(), G_KEY_FILE_NONE, nullptr) ==
      FALSE) {
    return {};
  }
  const std::unique_ptr<char, Free> name(
      g_key_file_get_string(file.get(), "Application", "name", nullptr));
  return name ? name.get() : "";
}

std::string applicationOfCgroup(const std::string& cgroup) {
  // app[-launcher]-ID-RANDOM.scope, app[-launcher]-ID[@RANDOM].service; an ID has no plain hyphen.
  static const std::regex pattern(
      R"(/app-(?:[^-/]+-)?([^-/@]+)(?:-[^-/]+\.scope|(?:@[^/]*)?\.service))");
  std::smatch match;
  return std::regex_search(cgroup, match, pattern) ? unescaped(match[1]) : "";
}

std::string scopeApplication(pid_t pid) {
  return applicationOfCgroup(contents(folder(pid) + "/cgroup"));
}

std::string machineId() {
  return firstLine("/etc/machine-id");
}

}  // namespace audrel::linuxos::proc
