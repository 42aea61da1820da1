#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/linux/loop/BackOff.h"
#include "platform/linux/loop/GLibHandles.h"
#include "platform/linux/loop/LoopSource.h"

namespace audrel::linuxos {

/// The program's connection to the session bus, made again whenever it is lost. The program works
/// without one: nothing here waits, and nothing fails for good. Answers come from the main loop,
/// or at once where there is no bus.
///
/// The first failure is logged, and each loss; attempts follow each other after a quarter of a
/// second, then ever more slowly, and at once when somebody needs the bus. Main thread.
class SessionBus {
 public:
  class Listener;

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

  /// Connects as soon as the main loop runs. Without a logger nothing is logged.
  explicit SessionBus(std::shared_ptr<os::Logger> logger = nullptr);

  /// Whoever is to be called back must live until then; calls nobody any more. What is still to be
  /// sent goes out first, which takes half a second at most.
  ~SessionBus();
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

  /// Hands the connection over when it is there: at once, or after three seconds at most.
  void withConnection(Use use);

  /// The connection, for a thread that is to use it while this one waits; null when there is none.
  ConnectionHandle connection() const;

  /// `arguments` is a tuple, consumed if floating; null for none. The called program is started
  /// if it does not run and the bus knows how.
  void call(const Method& method, GVariant* arguments, Answered answered);

 private:
  void connect();
  void connectionMade(ConnectionHandle connection);
  void connectionFailed(const std::string& reason);
  void connectionLost();
  void abandonAttempt();
  void call(GDBusConnection* connection, const Method& method, GVariant* arguments,
            Answered answered);

  static void onConnected(GObject* source, GAsyncResult* result, gpointer self) noexcept;
  static void onClosed(GDBusConnection* connection, gboolean vanished, GError* error,
                       gpointer self) noexcept;
  static void onAnswer(GObject* source, GAsyncResult* result, gpointer pending) noexcept;

  std::shared_ptr<os::Logger> logger_;
  CancellableHandle attempt_;  ///< null when none is under way
  CancellableHandle calls_;
  ConnectionHandle connection_;
  gulong closedHandler_ = 0;
  std::list<Listener*> listeners_;
  std::vector<Use> waiting_;
  LoopSource timeout_;
  BackOff attempts_;
  bool failureIsLogged_ = false;
};

/// Is told whenever the connection is there, and when it is no more, for as long as it lives.
class SessionBus::Listener {
 public:
  /// `bus` must outlive it. Both functions are called from the main loop only, never from here:
  /// `connected` also when the connection was there before, `disconnected` with a connection that
  /// is closed and released after the call. Neither may end a listener.
  Listener(SessionBus& bus, std::function<void(GDBusConnection*)> connected,
           std::function<void()> disconnected);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

 private:
  friend class SessionBus;

  void connected();
  void disconnected();

  SessionBus& bus_;
  std::function<void(GDBusConnection*)> connected_;
  std::function<void()> disconnected_;
  LoopSource firstTime_;
  bool isConnected_ = false;
};

}  // namespace audrel::linuxos
