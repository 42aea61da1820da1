#include "platform/linux/session/LogoutWatch.h"

namespace audrel::linuxos {

LogoutWatch::LogoutWatch(Application& application, SessionBus& bus)
    : application_(application),
      listener_(
          bus, [this](GDBusConnection* connection) { join(connection); },
          [this] { clients_.clear(); }) {}

void LogoutWatch::join(GDBusConnection* connection) {
  for (const SessionManagerNames& manager : sessionManagers) {
    clients_.emplace_back(connection, manager, [this] { application_.terminate(); });
  }
}

}  // namespace audrel::linuxos
