#include "platform/linux/bus/BusAddress.h"

#include <filesystem>
#include <system_error>

#include "platform/linux/loop/GLibHandles.h"
#include "platform/linux/system/Environment.h"

namespace audrel::linuxos {

std::optional<std::string> sessionBusAddress() {
  if (auto address = environmentVariable("DBUS_SESSION_BUS_ADDRESS")) {
    return address;
  }
  const auto runtimeFolder = environmentVariable("XDG_RUNTIME_DIR");
  const std::string socket = runtimeFolder.value_or("") + "/bus";
  std::error_code error;
  if (!runtimeFolder || !std::filesystem::exists(socket, error)) {
    return std::nullopt;
  }
  const StringHandle escaped(g_dbus_address_escape_value(socket.c_str()));
  return std::string("unix:path=") + escaped.get();
}

}  // namespace audrel::linuxos
