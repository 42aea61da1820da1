#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/session/NotificationSignals.h"

namespace audrel::linuxos {

struct Notification {
  /// As the desktop's protocol numbers them. A critical one stays until the user has seen it.
  enum class Urgency : std::uint8_t { normal = 1, critical = 2 };

  /// A button.
  struct Action {
    std::string key;  ///< no other one of the notification has it
    std::string label;
    std::function<void()> perform;

    /// What it does is not compared.
    bool operator==(const Action& other) const { return key == other.key && label == other.label; }
  };
  using Actions = std::vector<Action>;

  std::string summary;
  std::string body;  ///< plain text
  Urgency urgency = Urgency::normal;

  /// Of those with the same tag one at most is there: it takes the place of the one before it.
  /// While that one is on its way the newest waits, unless it says the same. Without a tag each
  /// stands for itself.
  std::string tag = {};

  /// Left out where the desktop shows none, so the text must do without; of more than three some
  /// desktops leave out the others. For notifications with a tag alone.
  Actions actions = {};

  bool operator==(const Notification&) const = default;
};

/// Shows the desktop's notifications. Where it has none, their text goes to the log. Main thread.
class Notifier {
 public:
  Notifier(SessionBus& bus, std::shared_ptr<os::Logger> logger);

  /// Returns at once.
  void notify(Notification notification);

  /// Takes away the one with that tag, or that is on its way with it. Returns at once.
  void withdraw(const std::string& tag);

  /// Whether a notification is still on its way.
  bool isBusy() const { return onTheirWay_ > 0; }

 private:
  /// Those of one tag.
  struct Tagged {
    std::optional<Notification> onItsWay;
    bool isWithdrawn = false;  ///< the one that is on its way
    std::optional<Notification> next;
    std::uint32_t last = 0;         ///< as the desktop numbers it; 0: none is there
    Notification::Actions actions;  ///< of the last
  };

  bool isToSend(const Notification& notification);
  void show(const Notification& notification, const SessionBus::Answer& capabilities);
  void done(const Notification& notification, const SessionBus::Answer& answer);
  void close(Tagged& tagged);
  Tagged* find(std::uint32_t number);
  void perform(std::uint32_t number, const std::string& key);
  static void forget(Tagged& tagged);
  void forgetAll();

  SessionBus& bus_;
  std::shared_ptr<os::Logger> logger_;
  int onTheirWay_ = 0;
  std::map<std::string, Tagged> tagged_;
  std::optional<NotificationSignals> signals_;  ///< while there is a bus
  SessionBus::Listener listener_;
};

}  // namespace audrel::linuxos
