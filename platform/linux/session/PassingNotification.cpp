#include "platform/linux/session/PassingNotification.h"

#include <condition_variable>
#include <mutex>

#include "platform/Identity.h"

namespace audrel::linuxos {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";

/// Its number; 0 when it was not shown.
guint32 show(const ConnectionHandle& connection, const Notice& notice,
             const std::stop_token& stop) {
  constexpr gint32 neverExpires = 0;
  constexpr int answerTimeout = 5000;  // milliseconds
  const CancellableHandle cancellable(g_cancellable_new());
  const std::stop_callback cancel(stop, [&] { g_cancellable_cancel(cancellable.get()); });
  const VariantHandle answer(g_dbus_connection_call_sync(
      connection.get(), service, path, service, "Notify",
      g_variant_new("(susssasa{sv}i)", "Audrel", 0, identity::bundleIdentifier,
                    notice.summary.c_str(), notice.body.c_str(), nullptr, nullptr, neverExpires),
      G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, answerTimeout, cancellable.get(), nullptr));
  guint32 number = 0;
  if (answer != nullptr) {
    g_variant_get(answer.get(), "(u)", &number);
  }
  return number;
}

void waitFor(const std::stop_token& stop) {
  std::mutex mutex;
  std::unique_lock lock(mutex);
  std::condition_variable_any().wait(lock, stop, [] { return false; });
}

}  // namespace

void showUntilStopped(const ConnectionHandle& connection, const Notice& notice,
                      const std::stop_token& stop) {
  if (connection == nullptr) {
    return;
  }
  const guint32 number = show(connection, notice, stop);
  waitFor(stop);
  if (number != 0) {
    g_dbus_connection_call(connection.get(), service, path, service, "CloseNotification",
                           g_variant_new("(u)", number), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
                           nullptr, nullptr, nullptr);
  }
}

}  // namespace audrel::linuxos
