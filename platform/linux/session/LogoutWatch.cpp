#include "platform/linux/session/LogoutWatch.h"

namespace audrel::linuxos {

LogoutWatch::LogoutWatch(Application& application)
    : application_(application),
      bus_({.connected = [this](GDBusConnection* connection) { join(connection); },
            .disconnected = [this] { clients_.clear(); }},
           nullptr) {}

void LogoutWatch::join(GDBusConnection* connection) {
  for (const SessionManagerNames& manager : sessionManagers) {
    clients_.emplace_back(connection, manager, [this] { application_.terminate(); });
  }
}

}  // namespace audrel::linuxos
