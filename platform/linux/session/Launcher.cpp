#include "platform/linux/session/Launcher.h"

#include <gio/gdesktopappinfo.h>

#include <memory>

#include "platform/linux/tray/GLibHandles.h"

namespace audrel::linuxos {

namespace {

using EntryHandle = std::unique_ptr<GDesktopAppInfo, Releaser<g_object_unref>>;

/// GIO's own connection to the session bus, which it tells of what it starts. By default that ends
/// the process when the bus does, recordings and all: so it is ours before GIO takes it.
ConnectionHandle harmlessBusConnection() {
  ConnectionHandle connection(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (connection != nullptr) {
    g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
  }
  return connection;
}

}  // namespace

std::optional<std::string> openUri(const std::string& uri) {
  const ConnectionHandle connection = harmlessBusConnection();
  GError* failure = nullptr;
  const gboolean isOpened = g_app_info_launch_default_for_uri(uri.c_str(), nullptr, &failure);
  const ErrorHandle error(failure);
  return isOpened == TRUE ? std::nullopt : std::optional(messageOf(error));
}

bool startDesktopEntry(const std::string& id) {
  const ConnectionHandle connection = harmlessBusConnection();
  const EntryHandle entry(g_desktop_app_info_new(id.c_str()));
  return entry != nullptr &&
         g_app_info_launch(G_APP_INFO(entry.get()), nullptr, nullptr, nullptr) == TRUE;
}

}  // namespace audrel::linuxos
