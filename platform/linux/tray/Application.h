#pragma once

#include <functional>
#include <vector>

#include "platform/AppKit.h"
#include "platform/linux/loop/GLibHandles.h"

namespace audrel::linuxos {

class ModalSession;

/// The application on a GLib main loop of the thread that makes it. Opens no display.
///
/// SIGTERM, SIGINT and SIGHUP end it as `terminate` does, those that came before once it runs: the
/// delegate is told first and has all the time it needs. More of them meanwhile change nothing.
/// SIGPIPE and SIGXFSZ are ignored.
class Application final : public NS::Application {
 public:
  Application();
  ~Application() override;
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  /// Without effect: a process without windows is in no dock.
  void setActivationPolicy(NS::ActivationPolicy policy) override;
  void setDelegate(const std::weak_ptr<NS::ApplicationDelegate>& delegate) override;

  /// Tells the delegate that launching has finished, then runs the loop. Returns at once when the
  /// application was terminated before.
  void run() override;

  /// Tells the delegate, calls off the alert that is up and lets `run` return once that alert's
  /// caller has. Returns. Only the first call counts.
  void terminate() override;

  bool isTerminating() const { return isTerminating_; }

  /// Whether an alert waits for its answer.
  bool isModal() const { return !modalSessions_.empty(); }

  /// Brings the alert that came up last to the front, if there is one.
  void presentAlert() const;

  /// `observer` is called whenever `isModal` may have changed.
  void setModalObserver(std::function<void()> observer);

 private:
  friend class ModalSession;

  void begin(ModalSession& session);
  void end(ModalSession& session);
  void installSignalHandlers();

  MainContextHandle context_;
  MainLoopHandle loop_;
  std::vector<SourceHandle> signalSources_;
  std::weak_ptr<NS::ApplicationDelegate> delegate_;
  std::vector<ModalSession*> modalSessions_;
  std::function<void()> modalObserver_;
  bool isTerminating_ = false;
};

/// An alert that waits for its answer, for as long as it lives: of all menu commands only quit is
/// honoured meanwhile. Main thread; it must not outlive the application object.
class ModalSession {
 public:
  /// `present` brings the alert to the front.
  explicit ModalSession(Application& application, std::function<void()> present = {});
  ~ModalSession();
  ModalSession(const ModalSession&) = delete;
  ModalSession& operator=(const ModalSession&) = delete;

  /// Runs the application's events, so that timers and the status item go on, until `finish` is
  /// called or the application terminates. False when it was termination that ended the wait: the
  /// alert is then to be taken down, and its answer to be the one that changes nothing. Once.
  bool wait();

  /// Ends the wait, also one that has not begun.
  void finish();

 private:
  friend class Application;
  void abort();

  Application& application_;
  std::function<void()> present_;
  MainLoopHandle loop_;
  bool isFinished_ = false;
  bool isAborted_ = false;
};

}  // namespace audrel::linuxos
