#include "tests/platform/linux/session/harness/MemoryLogger.h"

namespace audrel::sessiontest {

void MemoryLogger::log(os::LogLevel level, std::string_view line) noexcept {
  lines.push_back((level == os::LogLevel::error ? "error: " : "") + std::string(line));
}

}  // namespace audrel::sessiontest
