#include "platform/linux/session/NotificationSignals.h"

#include <string_view>
#include <utility>

namespace audrel::linuxos {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";

bool isOfType(GVariant* arguments, const char* type) {
  return g_variant_check_format_string(arguments, type, FALSE) == TRUE;
}

}  // namespace

NotificationSignals::NotificationSignals(GDBusConnection* connection, Events events)
    : connection_(connection),
      events_(std::move(events)),
      watch_(g_bus_watch_name_on_connection(
          connection, service, G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr,
          [](GDBusConnection*, const char*, gpointer self) {
            static_cast<NotificationSignals*>(self)->events_.forgotten();
          },
          this, nullptr)),
      subscription_(g_dbus_connection_signal_subscribe(connection, service, service, nullptr, path,
                                                       nullptr, G_DBUS_SIGNAL_FLAGS_NONE, onSignal,
                                                       this, nullptr)) {}

NotificationSignals::~NotificationSignals() {
  g_dbus_connection_signal_unsubscribe(connection_, subscription_);
  g_bus_unwatch_name(watch_);
}

void NotificationSignals::onSignal(GDBusConnection* /*connection*/, const char* /*sender*/,
                                   const char* /*path*/, const char* /*interface*/,
                                   const char* signal, GVariant* arguments,
                                   gpointer self) noexcept {
  const Events& events = static_cast<NotificationSignals*>(self)->events_;
  const std::string_view name = signal;
  guint32 number = 0;
  if (name == "ActionInvoked" && isOfType(arguments, "(us)")) {
    const char* key = nullptr;
    g_variant_get(arguments, "(u&s)", &number, &key);
    events.actionInvoked(number, key);
  } else if (name == "NotificationClosed" && isOfType(arguments, "(uu)")) {
    g_variant_get_child(arguments, 0, "u", &number);
    events.closed(number);
  }
}

}  // namespace audrel::linuxos
