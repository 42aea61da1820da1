#pragma once

#include <list>

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/session/SessionClient.h"
#include "platform/linux/tray/Application.h"

namespace audrel::linuxos {

/// Ends the application when the user logs out, through its delegate. Some desktops only tell the
/// programs that are clients of their session manager, and end the others with their display,
/// which this one does not have. (Where there is no session manager, logging out sends a signal.)
///
/// Never objects to a logout. Main thread.
class LogoutWatch {
 public:
  /// Both must outlive this object.
  LogoutWatch(Application& application, SessionBus& bus);

 private:
  void join(GDBusConnection* connection);

  Application& application_;
  std::list<SessionClient>
      clients_;  ///< of every session manager that is known; none without a bus
  SessionBus::Listener listener_;
};

}  // namespace audrel::linuxos
