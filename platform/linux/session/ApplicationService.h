#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/linux/bus/ExportedObject.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/loop/LoopSource.h"
#include "platform/linux/session/Notifier.h"
#include "platform/linux/tray/Application.h"

namespace audrel::linuxos {

/// What the desktop asks of the running program through the actions of its desktop entry. Each has
/// had its effect when it returns, so that the next one is judged by it.
class ApplicationCommands {
 public:
  virtual ~ApplicationCommands() = default;

  /// Nothing while it records.
  virtual void startRecording() = 0;

  /// Nothing while it does not.
  virtual void stopRecording() = 0;

  /// Whichever of the two it is.
  virtual void toggleRecording() = 0;
  virtual void quit() = 0;

  /// The entry itself was chosen: the user wants to know what goes on.
  virtual void activate() = 0;
};

/// The program on the session bus, as desktops know applications: it owns its identifier as a name,
/// so that there is one of it in a session, and offers org.freedesktop.Application with the actions
/// "start-recording", "stop-recording", "toggle-recording" and "quit". To be activated while it
/// runs is what a second start does.
///
/// When the bus is lost, name and object are there again once the bus is. Main thread.
class ApplicationService {
 public:
  /// The identifier with slashes.
  static constexpr const char* objectPath = "/io/github/audrel/Audrel";

  enum class Claim {
    first,        ///< this one is to run; also where there is no bus, or it does not answer
    runsAlready,  ///< another one does, and the user was told
  };

  /// The references must outlive it.
  ApplicationService(Application& application, SessionBus& bus, Notifier& notifier,
                     std::shared_ptr<os::Logger> logger);
  ApplicationService(const ApplicationService&) = delete;
  ApplicationService& operator=(const ApplicationService&) = delete;

  /// Before the application runs, once. The main loop's events go on meanwhile: for three seconds
  /// at most, beside the time that the desktop takes to show the notification.
  Claim claim();

  /// Actions that came before are performed then, from the main loop, and each once the one before
  /// it has had its effect or waits in an alert. While an alert is up only quit is honoured, all
  /// else brings the alert to the front; while nobody is there nothing is.
  void setCommands(const std::weak_ptr<ApplicationCommands>& commands);

  /// What the desktop entry offers.
  static std::vector<std::string> actionNames();

  /// The interface's methods, as the bus calls them. An unknown action is refused.
  void activate();
  bool activateAction(const std::string& name);

 private:
  using Command = void (ApplicationCommands::*)();

  void requestName(GDBusConnection* connection);
  void nameAnswered(const SessionBus::Answer& answer);
  void activateOther();
  void notifyRunning();
  void decide(Claim claim);
  void giveUpWaiting();
  void performNextCommand();

  Application& application_;
  SessionBus& bus_;
  Notifier& notifier_;
  std::shared_ptr<os::Logger> logger_;
  std::optional<ExportedObject> object_;
  std::optional<Claim> claim_;  ///< nothing until it is decided
  bool otherHasName_ = false;

  /// Until then the first activation is the one for which the bus started this process, and no
  /// second start.
  std::chrono::microseconds activationExpectedUntil_;

  std::optional<std::weak_ptr<ApplicationCommands>> commands_;
  std::deque<Command> waiting_;
  LoopSource perform_;
  SessionBus::Listener listener_;
};

}  // namespace audrel::linuxos
