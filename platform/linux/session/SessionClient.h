#pragma once

#include <array>
#include <functional>
#include <string>

#include "platform/linux/loop/GLibHandles.h"

namespace audrel::linuxos {

/// What a session manager and its clients are called on the bus.
struct SessionManagerNames {
  const char* name;
  const char* path;
  const char* interface;
  const char* clientInterface;
};

/// GNOME's, which MATE and Cinnamon have under the same names, and Xfce's.
inline constexpr std::array sessionManagers = {
    SessionManagerNames{"org.gnome.SessionManager", "/org/gnome/SessionManager",
                        "org.gnome.SessionManager", "org.gnome.SessionManager.ClientPrivate"},
    SessionManagerNames{"org.xfce.SessionManager", "/org/xfce/SessionManager",
                        "org.xfce.Session.Manager", "org.xfce.Session.Client"},
};

/// This program as a client of one session manager, once that is there. Main thread.
class SessionClient {
 public:
  /// `connection` must outlive this object. `sessionEnds` is called from the main loop;
  /// when it returns, the session manager may end the process.
  SessionClient(GDBusConnection* connection, const SessionManagerNames& manager,
                std::function<void()> sessionEnds);
  ~SessionClient();
  SessionClient(const SessionClient&) = delete;
  SessionClient& operator=(const SessionClient&) = delete;

 private:
  void registerClient();
  void handle(const std::string& signal);
  void agree() const;

  static void onRegistered(GObject* source, GAsyncResult* result, gpointer self) noexcept;
  static void onSignal(GDBusConnection* connection, const char* sender, const char* path,
                       const char* interface, const char* signal, GVariant* arguments,
                       gpointer self) noexcept;

  GDBusConnection* connection_;
  SessionManagerNames manager_;
  std::function<void()> sessionEnds_;
  CancellableHandle cancellable_;
  std::string clientPath_;  ///< empty as long as the manager has not given one
  guint watch_;
  guint subscription_;
};

}  // namespace audrel::linuxos
