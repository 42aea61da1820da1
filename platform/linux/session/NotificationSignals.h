#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/linux/loop/GLibHandles.h"

namespace audrel::linuxos {

/// Follows what the desktop tells of the notifications that it shows, those of other programs
/// included, on one bus connection. Main thread.
class NotificationSignals {
 public:
  /// Called from the main loop, with the number of a notification.
  struct Events {
    std::function<void(std::uint32_t number, const std::string& key)> actionInvoked;
    std::function<void(std::uint32_t number)> closed;
    std::function<void()> forgotten;  ///< whoever showed them has gone: none is there any more
  };

  /// `connection` must outlive this object.
  NotificationSignals(GDBusConnection* connection, Events events);
  ~NotificationSignals();
  NotificationSignals(const NotificationSignals&) = delete;
  NotificationSignals& operator=(const NotificationSignals&) = delete;

 private:
  static void onSignal(GDBusConnection* connection, const char* sender, const char* path,
                       const char* interface, const char* signal, GVariant* arguments,
                       gpointer self) noexcept;

  GDBusConnection* connection_;
  Events events_;
  guint watch_;
  guint subscription_;
};

}  // namespace audrel::linuxos
