#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/bus/ExportedObject.h"
#include "platform/linux/tray/Pixmap.h"

namespace audrel::linuxos {

/// What the status item shows.
struct StatusItemLook {
  std::string iconName;         ///< empty when no icon of the theme shows it
  std::string iconThemePath;    ///< where panels look for the name first; empty for nowhere
  std::vector<Pixmap> pixmaps;  ///< the picture in several sizes, instead of a name
  std::string iconDescription = "Audrel";  ///< for who does not see the icon
  std::string label;                       ///< the text beside the icon; empty for none
  std::string title = "Audrel";            ///< what the program does; also the tool tip

  bool operator==(const StatusItemLook&) const = default;
};

/// The status item on a bus connection, as `org.kde.StatusNotifierItem`. Main thread.
class StatusNotifierItem {
 public:
  StatusNotifierItem(GDBusConnection* connection, StatusItemLook look);

  /// Tells panels what has changed, if anything has.
  void show(StatusItemLook look);

 private:
  void tellLabel() const;

  StatusItemLook look_;
  ExportedObject object_;
};

}  // namespace audrel::linuxos
