#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/linux/loop/BackOff.h"
#include "platform/linux/loop/GLibHandles.h"

namespace audrel::linuxos {

/// A connection of our own to the session bus, made again whenever it is lost. The program works
/// without one: nothing here waits, and nothing fails for good.
///
/// The first failure is logged, and each loss; attempts follow each other after a quarter of a
/// second, then ever more slowly, down to two a minute. Main thread.
class SessionBus {
 public:
  struct Listener {
    std::function<void(GDBusConnection*)> connected;

    /// The connection that was given is closed, and released after this call.
    std::function<void()> disconnected;
  };

  /// The listener is called from the main loop only, never from here. Without a logger nothing is
  /// logged: one bus object tells enough.
  SessionBus(Listener listener, std::shared_ptr<os::Logger> logger);
  ~SessionBus();
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

 private:
  void connect();
  void connectionMade(ConnectionHandle connection);
  void connectionFailed(const std::string& reason);
  void connectionClosed();

  static void onConnected(GObject* source, GAsyncResult* result, gpointer self) noexcept;
  static void onClosed(GDBusConnection* connection, gboolean vanished, GError* error,
                       gpointer self) noexcept;

  Listener listener_;
  std::shared_ptr<os::Logger> logger_;
  CancellableHandle cancellable_;
  ConnectionHandle connection_;
  gulong closedHandler_ = 0;
  BackOff attempts_;
  bool failureIsLogged_ = false;
};

}  // namespace audrel::linuxos
