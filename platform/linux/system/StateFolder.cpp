#include "platform/linux/system/StateFolder.h"

#include "platform/linux/system/Environment.h"

namespace audrel::linuxos {

std::filesystem::path stateFolder(const std::filesystem::path& home) {
  const std::filesystem::path configured = environmentVariable("XDG_STATE_HOME").value_or("");
  return (configured.is_absolute() ? configured : home / ".local" / "state") / "audrel";
}

}  // namespace audrel::linuxos
