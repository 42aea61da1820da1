#include "platform/linux/system/Environment.h"

#include <cstdlib>

namespace audrel::linuxos {

std::optional<std::string> environmentVariable(const char* name) {
  // Unsafe only beside a thread that writes to the environment, and there is none.
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
  if (value == nullptr || *value == '\0') {
    return std::nullopt;
  }
  return value;
}

}  // namespace audrel::linuxos
