#include "platform/linux/session/Launcher.h"

#include <gio/gdesktopappinfo.h>

#include <chrono>
#include <memory>

#include "platform/linux/loop/GLibHandles.h"
#include "platform/linux/loop/LoopSource.h"

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;
using EntryHandle = std::unique_ptr<GDesktopAppInfo, Releaser<g_object_unref>>;

constexpr auto connectTimeout = 3s;

/// GIO's own connection to the session bus, while it is made and after.
struct BusConnection {
  ConnectionHandle connection;  ///< null where there is no bus
  bool isAnswered = false;
};

/// By default GIO's connection ends the process when the bus does, recordings and all: so it is
/// ours before GIO takes it.
void onConnected(GObject* /*source*/, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<std::shared_ptr<BusConnection>> bus(
      static_cast<std::shared_ptr<BusConnection>*>(data));
  (*bus)->connection.reset(g_bus_get_finish(result, nullptr));
  (*bus)->isAnswered = true;
  if ((*bus)->connection != nullptr) {
    g_dbus_connection_set_exit_on_close((*bus)->connection.get(), FALSE);
  }
}

/// GIO tells the bus of what it starts, and waits for it without end: so it is asked first.
std::shared_ptr<BusConnection> harmlessBusConnection() {
  const auto bus = std::make_shared<BusConnection>();
  const CancellableHandle attempt(g_cancellable_new());
  auto kept = std::make_unique<std::shared_ptr<BusConnection>>(bus);
  g_bus_get(G_BUS_TYPE_SESSION, attempt.get(), onConnected, kept.release());
  bool isLate = false;
  LoopSource timeout([&] { isLate = true; });
  timeout.callAfter(connectTimeout);
  while (!bus->isAnswered && !isLate) {
    g_main_context_iteration(mainContext().get(), TRUE);
  }
  g_cancellable_cancel(attempt.get());
  return bus;
}

}  // namespace

std::optional<std::string> openUri(const std::string& uri) {
  const auto bus = harmlessBusConnection();
  if (!bus->isAnswered) {
    return "the session bus does not answer";
  }
  GError* failure = nullptr;
  const gboolean isOpened = g_app_info_launch_default_for_uri(uri.c_str(), nullptr, &failure);
  const ErrorHandle error(failure);
  return isOpened == TRUE ? std::nullopt : std::optional(messageOf(error));
}

bool startDesktopEntry(const std::string& id) {
  const EntryHandle entry(g_desktop_app_info_new(id.c_str()));
  if (entry == nullptr) {
    return false;
  }
  const auto bus = harmlessBusConnection();
  return bus->isAnswered &&
         g_app_info_launch(G_APP_INFO(entry.get()), nullptr, nullptr, nullptr) == TRUE;
}

}  // namespace audrel::linuxos
