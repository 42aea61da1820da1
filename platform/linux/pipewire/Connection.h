#pragma once

#include <pipewire/pipewire.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/pipewire/GraphMirror.h"
#include "platform/linux/pipewire/Handles.h"

namespace audrel::linuxos {

/// A connection to a PipeWire server that is made when it is needed and made again when it was
/// lost. It is lost when the server or the protocol ends it, whatever the reason, and when the
/// server leaves a round trip unanswered. It has a thread of its own; everything here but the
/// constructor and destructor is called on that thread or under its lock.
class Connection {
 public:
  /// Told on the connection's thread.
  class Observer {
   public:
    virtual ~Observer() = default;
    virtual void graphChanged() = 0;  ///< after one or several changes, or when it was asked for
    virtual void serverLost() = 0;    ///< everything made on the connection must go now
  };

  /// To the server that the environment names. Throws `std::system_error` when the system gives no
  /// more threads or descriptors.
  Connection();
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  pw_thread_loop* loop() const { return loop_.get(); }
  pw_core* core() const { return core_; }
  const Graph& graph() const { return mirror_ ? mirror_->graph() : noGraph_; }

  void setObserver(Observer* observer) { observer_ = observer; }

  /// From now on the server at that socket (an absolute path) is meant. Before it is needed first.
  void useServer(std::string socketPath) { remote_ = std::move(socketPath); }

  /// Connects if there is no connection; whether there is one then.
  bool ensureConnected();
  bool isConnected() const { return core_ != nullptr && !isLost_; }

  /// Why the last attempt to connect failed, or the last connection was lost, for the user, with
  /// the remedy.
  std::string failure() const;

  /// Why the server, which has just been asked for a round trip, does not let this program capture;
  /// nothing when it does, or when nothing is known of it.
  std::optional<std::string> refusal() const;

  /// Counts who needs the connection to last: while somebody does, a lost server is looked for
  /// several times a second.
  void retainConnection();
  void releaseConnection();

  /// Counts who needs the details of nodes and clients; see `GraphMirror::followDetails`.
  void retainDetails();
  void releaseDetails();

  /// Waits until the server has answered everything asked so far, by when what it announced has
  /// arrived. False when the connection was lost, as it is when two seconds have passed. Not on the
  /// loop's thread, and by one thread at a time.
  bool roundTrip();

  /// Waits until `condition` holds, tested after every event, on the connection that there is now.
  /// False when that was lost or the time has passed, on the monotonic clock. As `roundTrip`.
  bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout);

  /// Wakes whoever waits in `waitUntil`.
  void wake() { pw_thread_loop_signal(loop_.get(), false); }

  /// Has the observer told of a change soon, from the loop itself.
  void noteChange();

 private:
  using FailureText = std::string (*)(const std::string& remote, int error);

  bool connect();
  void disconnect();
  void greeted();
  void failed(int error);
  bool fail(FailureText text, int error);
  void lose(int error);
  void dropLostServer();
  void retry();
  void updateRetryTimer();

  static const pw_core_events coreEvents;

  std::string remote_;  ///< a socket's path; empty for the one that the environment names
  Observer* observer_ = nullptr;
  ThreadLoopHandle loop_;
  ContextHandle context_;  ///< made with the first connection
  spa_source* changeEvent_ = nullptr;
  spa_source* lossEvent_ = nullptr;
  spa_source* retryTimer_ = nullptr;
  spa_source* waitTimer_ = nullptr;
  pw_core* core_ = nullptr;
  Hook coreHook_;
  std::unique_ptr<GraphMirror> mirror_;
  Graph noGraph_;
  FailureText failureText_ = nullptr;  ///< of the last attempt to connect, or loss
  int error_ = 0;                      ///< the same
  const char* refusal_ = nullptr;      ///< the server's, to the last attempt to connect
  int detailUsers_ = 0;
  bool isGreeted_ = false;  ///< the server has said who it is
  int answeredSync_ = -1;
  bool isLost_ = false;  ///< noticed, not yet cleared away
  unsigned losses_ = 0;  ///< noticed so far
  int connectionUsers_ = 0;
};

}  // namespace audrel::linuxos
