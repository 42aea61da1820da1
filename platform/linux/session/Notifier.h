#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
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

  /// Of those with the same tag one at most is there: it takes the place of the one before it, and
  /// is left out while that one is on its way. Without a tag each stands for itself.
  std::string tag = {};
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

  void show(const Notification& notification, BodyFormat format);
  void done(const Notification& notification, const SessionBus::Answer& answer);

  SessionBus& bus_;
  std::shared_ptr<os::Logger> logger_;
  int onTheirWay_ = 0;
  std::set<std::string> tagsOnTheirWay_;
  std::map<std::string, std::uint32_t> lastOfTag_;  ///< as the desktop numbers it
};

}  // namespace audrel::linuxos
