#pragma once

#include "platform/linux/loop/GLibHandles.h"

namespace audrel::linuxos {

/// One interface at a path of a bus connection, there until this object goes. After that nothing
/// of the table is called any more. Main thread.
class ExportedObject {
 public:
  /// `interfaceXml` declares one interface. `table` and `data` must outlive this object.
  ExportedObject(GDBusConnection* connection, const char* path, const char* interfaceXml,
                 const GDBusInterfaceVTable& table, void* data);
  ~ExportedObject();
  ExportedObject(const ExportedObject&) = delete;
  ExportedObject& operator=(const ExportedObject&) = delete;

  /// Sends a signal of the interface.
  /// `arguments` is a tuple, consumed if floating; null for none.
  void emit(const char* signal, GVariant* arguments) const;

  /// Tells of properties with their new values (`a{sv}`) and of those that are no more (`as`).
  void emitPropertiesChanged(GVariant* changed, GVariant* invalidated) const;

 private:
  ConnectionHandle connection_;
  const char* path_;
  NodeInfoHandle node_;
  guint registration_;
};

}  // namespace audrel::linuxos
