#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/linux/bus/SessionBus.h"

namespace audrel::linuxos {

struct Notification {
  /// As the desktop's protocol numbers them. A critical one stays until the user has seen it.
  enum class Urgency : std::uint8_t { normal = 1, critical = 2 };

  std::string summary;
  std::string body;  ///< plain text
  Urgency urgency = Urgency::normal;

  /// Of those with the same tag one at most is there: it takes the place of the one before it.
  /// While that one is on its way the newest waits, unless it says the same. Without a tag each
  /// stands for itself.
  std::string tag = {};

  bool operator==(const Notification&) const = default;
};

/// Shows the desktop's notifications. Where it has none, their text goes to the log. Main thread.
class Notifier {
 public:
  Notifier(SessionBus& bus, std::shared_ptr<os::Logger> logger);

  /// Returns at once.
  void notify(Notification notification);

  /// Whether a notification is still on its way.
  bool isBusy() const { return onTheirWay_ > 0; }

 private:
  enum class BodyFormat { plain, markup };

  /// Those of one tag.
  struct Tagged {
    std::optional<Notification> onItsWay;
    std::optional<Notification> next;
    std::uint32_t last = 0;  ///< as the desktop numbers it; 0: none is there
  };

  bool isToSend(const Notification& notification);
  void show(const Notification& notification, BodyFormat format);
  void done(const Notification& notification, const SessionBus::Answer& answer);

  SessionBus& bus_;
  std::shared_ptr<os::Logger> logger_;
  int onTheirWay_ = 0;
  std::map<std::string, Tagged> tagged_;
};

}  // namespace audrel::linuxos
