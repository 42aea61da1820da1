#include "platform/linux/system/Machine.h"

#include <cstddef>

#include "platform/linux/system/ForeignFile.h"

namespace audrel::linuxos {

namespace {

constexpr const char* bootFile = "/proc/sys/kernel/random/boot_id";

std::string firstLine(const std::filesystem::path& file) {
  constexpr std::size_t largest = 1024;
  const std::string text = readForeignFile(file, largest).text.value_or("");
  return text.substr(0, text.find('\n'));
}

/// Of this length, of hexadecimal digits and perhaps hyphens alone.
bool isId(const std::string& text, std::size_t length) {
  return text.size() == length && text.find_first_not_of("0123456789abcdef-") == std::string::npos;
}

}  // namespace

std::optional<Machine> thisMachine(const std::filesystem::path& idFile) {
  constexpr std::size_t idLength = 32;
  constexpr std::size_t bootLength = 36;
  Machine machine{.id = firstLine(idFile), .boot = firstLine(bootFile)};
  if (!isId(machine.id, idLength) || !isId(machine.boot, bootLength)) {
    return std::nullopt;
  }
  return machine;
}

}  // namespace audrel::linuxos
