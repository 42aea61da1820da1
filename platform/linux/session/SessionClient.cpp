#include "platform/linux/session/SessionClient.h"

#include <utility>

#include "platform/Identity.h"
#include "platform/linux/system/Environment.h"

namespace audrel::linuxos {

SessionClient::SessionClient(GDBusConnection* connection, const SessionManagerNames& manager,
                             std::function<void()> sessionEnds)
    : connection_(connection),
      manager_(manager),
      sessionEnds_(std::move(sessionEnds)),
      cancellable_(g_cancellable_new()),
      watch_(g_bus_watch_name_on_connection(
          connection, manager_.name, G_BUS_NAME_WATCHER_FLAGS_NONE,
          [](GDBusConnection*, const char*, const char*, gpointer self) {
            static_cast<SessionClient*>(self)->registerClient();
          },
          [](GDBusConnection*, const char*, gpointer self) {
            static_cast<SessionClient*>(self)->clientPath_.clear();
          },
          this, nullptr)),
      subscription_(g_dbus_connection_signal_subscribe(
          connection, manager_.name, manager_.clientInterface, nullptr, nullptr, nullptr,
          G_DBUS_SIGNAL_FLAGS_NONE, onSignal, this, nullptr)) {}

SessionClient::~SessionClient() {
  g_cancellable_cancel(cancellable_.get());
  g_dbus_connection_signal_unsubscribe(connection_, subscription_);
  g_bus_unwatch_name(watch_);
}

void SessionClient::registerClient() {
  // Given to programs that the session manager itself has started.
  const std::string startup = environmentVariable("DESKTOP_AUTOSTART_ID").value_or("");
  g_dbus_connection_call(connection_, manager_.name, manager_.path, manager_.interface,
                         "RegisterClient",
                         g_variant_new("(ss)", identity::bundleIdentifier, startup.c_str()),
                         reinterpret_cast<const GVariantType*>("(o)"), G_DBUS_CALL_FLAGS_NONE, -1,
                         cancellable_.get(), onRegistered, this);
}

void SessionClient::onRegistered(GObject* source, GAsyncResult* result, gpointer self) noexcept {
  const VariantHandle answer(
      g_dbus_connection_call_finish(reinterpret_cast<GDBusConnection*>(source), result, nullptr));
  if (answer == nullptr) {
    return;  // refused, or this object has gone
  }
  const char* path = nullptr;
  g_variant_get(answer.get(), "(&o)", &path);
  static_cast<SessionClient*>(self)->clientPath_ = path;
}

void SessionClient::onSignal(GDBusConnection* /*connection*/, const char* /*sender*/,
                             const char* path, const char* /*interface*/, const char* signal,
                             GVariant* /*arguments*/, gpointer self) noexcept {
  auto* client = static_cast<SessionClient*>(self);
  if (client->clientPath_ == path) {
    client->handle(signal);
  }
}

void SessionClient::handle(const std::string& signal) {
  if (signal == "QueryEndSession") {
    agree();
  } else if (signal == "EndSession") {
    // The session manager goes on once it is answered: not before the recording is closed.
    sessionEnds_();
    agree();
  } else if (signal == "Stop") {
    sessionEnds_();
  }
}

void SessionClient::agree() const {
  g_dbus_connection_call(connection_, manager_.name, clientPath_.c_str(), manager_.clientInterface,
                         "EndSessionResponse", g_variant_new("(bs)", TRUE, ""), nullptr,
                         G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

}  // namespace audrel::linuxos
