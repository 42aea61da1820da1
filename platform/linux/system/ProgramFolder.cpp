#include "platform/linux/system/ProgramFolder.h"

#include <system_error>

namespace audrel::linuxos {

std::filesystem::path programFolder() {
  std::error_code error;
  // After an upgrade the link ends in " (deleted)", and its folder is where the new one is.
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

std::filesystem::path partOfProgram(const char* name, const char* installed) {
  const auto folder = programFolder();
  for (const char* place : {".", installed}) {
    auto part = (folder / place / name).lexically_normal();
    std::error_code error;
    if (!folder.empty() && std::filesystem::exists(part, error)) {
      return part;
    }
  }
  return {};
}

}  // namespace audrel::linuxos
