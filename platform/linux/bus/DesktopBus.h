#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/linux/loop/GLibHandles.h"
#include "platform/linux/loop/LoopSource.h"

namespace audrel::linuxos {

/// A connection of our own to the session bus, for calls to the desktop's other programs. It is
/// made when it is first needed, and made again for the next need after it was lost. Nothing here
/// waits: answers come from the main loop, or at once where there is no bus.
///
/// Whoever is to be called back must live as long as this object, which calls nobody once it has
/// gone. Main thread.
class DesktopBus {
 public:
  /// Takes the connection; null when there is none, with the reason.
  using Use = std::function<void(GDBusConnection* connection, const std::string& failure)>;

  struct Method {
    const char* service;
    const char* path;
    const char* interface;
    const char* member;
  };

  struct Answer {
    VariantHandle values;  ///< a tuple; null when the call failed
    std::string failure;
  };
  using Answered = std::function<void(const Answer& answer)>;

  DesktopBus();
  ~DesktopBus();
  DesktopBus(const DesktopBus&) = delete;
  DesktopBus& operator=(const DesktopBus&) = delete;

  /// Hands the connection over when it is there: at once, or after three seconds at most.
  void withConnection(Use use);

  /// `arguments` is a tuple, consumed if floating; null for none. The called program is started
  /// if it does not run and the bus knows how.
  void call(const Method& method, GVariant* arguments, Answered answered);

  /// `observer` is called when the connection was lost.
  void setLossObserver(std::function<void()> observer);

 private:
  void connect();
  void connected(ConnectionHandle connection);
  void failed(const std::string& reason);
  void lost();
  void abandonAttempt();
  void call(GDBusConnection* connection, const Method& method, GVariant* arguments,
            Answered answered);

  static void onConnected(GObject* source, GAsyncResult* result, gpointer self) noexcept;
  static void onClosed(GDBusConnection* connection, gboolean vanished, GError* error,
                       gpointer self) noexcept;
  static void onAnswer(GObject* source, GAsyncResult* result, gpointer pending) noexcept;

  CancellableHandle attempt_;  ///< null when none is made
  CancellableHandle calls_;
  ConnectionHandle connection_;
  gulong closedHandler_ = 0;
  std::vector<Use> waiting_;
  LoopSource timeout_;
  std::function<void()> lossObserver_;
};

}  // namespace audrel::linuxos
