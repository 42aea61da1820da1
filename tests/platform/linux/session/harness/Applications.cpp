#include "tests/platform/linux/session/harness/Applications.h"

#include <cstdlib>
#include <fstream>
#include <system_error>

#include "tests/support/MainLoop.h"

namespace audrel::sessiontest {

namespace {

namespace fs = std::filesystem;

/// Appends its arguments to a file, in one write.
constexpr const char* script = "#!/bin/sh\nfile=$1\nshift\necho \"$*\" >>\"$file\"\n";

std::vector<std::string> linesOf(const fs::path& file) {
  std::ifstream stream(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

}  // namespace

Applications::Applications(const std::vector<Application>& installed) {
  const fs::path& root = folder_.path();
  fs::create_directories(root / "data" / "applications");
  fs::create_directories(root / "config");
  std::ofstream(root / "start") << script;
  fs::permissions(root / "start", fs::perms::owner_all);
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  setenv("XDG_DATA_DIRS", (root / "none").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
  setenv("XDG_CONFIG_DIRS", (root / "none").c_str(), 1);
  std::ofstream(root / "config" / "mimeapps.list") << "[Default Applications]\n";
  for (const Application& application : installed) {
    install(application);
  }
}

void Applications::install(const Application& application) const {
  const fs::path& root = folder_.path();
  std::ofstream entry(root / "data" / "applications" / (application.id + ".desktop"));
  entry << "[Desktop Entry]\nType=Application\nName=" << application.id
        << "\nExec=" << (root / "start").string() << " " << log_.string() << " " << application.id
        << " %u\nMimeType=";
  std::ofstream defaults(root / "config" / "mimeapps.list", std::ios::app);
  for (const std::string& type : application.types) {
    entry << type << ";";
    defaults << type << "=" << application.id << ".desktop\n";
  }
  entry << "\n";
}

std::vector<std::string> Applications::takeStarted() {
  support::runLoopUntil([this] { return !linesOf(log_).empty(); });
  auto lines = linesOf(log_);
  std::error_code error;
  fs::remove(log_, error);
  return lines;
}

}  // namespace audrel::sessiontest
