#include "platform/linux/bus/ExportedObject.h"

namespace audrel::linuxos {

namespace {

ConnectionHandle referenceTo(GDBusConnection* connection) {
  g_object_ref(connection);
  return ConnectionHandle(connection);
}

}  // namespace

ExportedObject::ExportedObject(GDBusConnection* connection, const char* path,
                               const char* interfaceXml, const GDBusInterfaceVTable& table,
                               void* data)
    : connection_(referenceTo(connection)),
      path_(path),
      node_(g_dbus_node_info_new_for_xml(interfaceXml, nullptr)),
      registration_(g_dbus_connection_register_object(connection, path_, node_->interfaces[0],
                                                      &table, data, nullptr, nullptr)) {}

ExportedObject::~ExportedObject() {
  g_dbus_connection_unregister_object(connection_.get(), registration_);
}

void ExportedObject::emit(const char* signal, GVariant* arguments) const {
  g_dbus_connection_emit_signal(connection_.get(), nullptr, path_, node_->interfaces[0]->name,
                                signal, arguments, nullptr);
}

void ExportedObject::emitPropertiesChanged(GVariant* changed, GVariant* invalidated) const {
  g_dbus_connection_emit_signal(
      connection_.get(), nullptr, path_, "org.freedesktop.DBus.Properties", "PropertiesChanged",
      g_variant_new("(s@a{sv}@as)", node_->interfaces[0]->name, changed, invalidated), nullptr);
}

}  // namespace audrel::linuxos
