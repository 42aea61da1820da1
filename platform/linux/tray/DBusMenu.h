#pragma once

#include <memory>

#include "platform/linux/bus/ExportedObject.h"
#include "platform/linux/tray/MenuPresenter.h"

namespace audrel::linuxos {

/// A menu on a bus connection, as `com.canonical.dbusmenu`. Main thread; one at a time for a
/// presenter.
class DBusMenu {
 public:
  DBusMenu(GDBusConnection* connection, std::shared_ptr<MenuPresenter> presenter);
  ~DBusMenu();
  DBusMenu(const DBusMenu&) = delete;
  DBusMenu& operator=(const DBusMenu&) = delete;

 private:
  std::shared_ptr<MenuPresenter> presenter_;
  ExportedObject object_;
};

}  // namespace audrel::linuxos
