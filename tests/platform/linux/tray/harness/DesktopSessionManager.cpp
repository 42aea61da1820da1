#include "tests/platform/linux/tray/harness/DesktopSessionManager.h"

#include <string_view>

namespace audrel::traytest {

namespace {

constexpr GDBusConnectionFlags clientFlags = static_cast<GDBusConnectionFlags>(
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

constexpr const char* registering =
    "<method name='RegisterClient'><arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='o' direction='out'/></method>";
constexpr const char* responding =
    "<method name='EndSessionResponse'><arg type='b' direction='in'/>"
    "<arg type='s' direction='in'/></method>";

}  // namespace

DesktopSessionManager::DesktopSessionManager(const std::string& busAddress, Desktop desktop)
    : connection_(g_dbus_connection_new_for_address_sync(busAddress.c_str(), clientFlags, nullptr,
                                                         nullptr, nullptr)) {
  const bool isGnome = desktop == Desktop::gnome;
  clientInterface_ = isGnome ? "org.gnome.SessionManager.ClientPrivate" : "org.xfce.Session.Client";
  exportObject(isGnome ? "/org/gnome/SessionManager" : "/org/xfce/SessionManager",
               isGnome ? "org.gnome.SessionManager" : "org.xfce.Session.Manager", registering);
  exportObject(clientPath, clientInterface_, responding);
  name_ = g_bus_own_name_on_connection(
      connection_, isGnome ? "org.gnome.SessionManager" : "org.xfce.SessionManager",
      G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr, nullptr);
}

DesktopSessionManager::~DesktopSessionManager() {
  g_bus_unown_name(name_);
  for (const guint object : objects_) {
    g_dbus_connection_unregister_object(connection_, object);
  }
  g_dbus_connection_close_sync(connection_, nullptr, nullptr);
  g_object_unref(connection_);
}

void DesktopSessionManager::exportObject(const char* path, const std::string& interface,
                                         const std::string& methods) {
  static constexpr GDBusInterfaceVTable table{onCall, nullptr, nullptr, {}};
  const std::string xml =
      "<node><interface name='" + interface + "'>" + methods + "</interface></node>";
  GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(xml.c_str(), nullptr);
  objects_.push_back(g_dbus_connection_register_object(connection_, path, node->interfaces[0],
                                                       &table, this, nullptr, nullptr));
  g_dbus_node_info_unref(node);
}

void DesktopSessionManager::tell(const std::string& path, const std::string& signal) {
  const bool hasFlags = signal != "Stop";
  g_dbus_connection_emit_signal(connection_, nullptr, path.c_str(), clientInterface_.c_str(),
                                signal.c_str(), hasFlags ? g_variant_new("(u)", 0U) : nullptr,
                                nullptr);
}

void DesktopSessionManager::onCall(GDBusConnection* /*connection*/, const char* /*sender*/,
                                   const char* /*path*/, const char* /*interface*/,
                                   const char* method, GVariant* arguments,
                                   GDBusMethodInvocation* invocation, gpointer self) {
  char* text = g_variant_print(arguments, TRUE);
  static_cast<DesktopSessionManager*>(self)->calls_.push_back(std::string(method) + text);
  g_free(text);
  const bool registers = std::string_view(method) == "RegisterClient";
  g_dbus_method_invocation_return_value(invocation,
                                        registers ? g_variant_new("(o)", clientPath) : nullptr);
}

}  // namespace audrel::traytest
