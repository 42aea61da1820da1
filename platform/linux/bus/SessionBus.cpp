#include "platform/linux/bus/SessionBus.h"

#include <utility>

#include "platform/linux/bus/BusAddress.h"

namespace audrel::linuxos {

namespace {

constexpr std::chrono::milliseconds firstDelay{250};

}  // namespace

SessionBus::SessionBus(Listener listener, std::shared_ptr<os::Logger> logger)
    : listener_(std::move(listener)),
      logger_(std::move(logger)),
      cancellable_(g_cancellable_new()),
      attempts_(firstDelay, [this] { connect(); }) {
  attempts_.attemptSoon();
}

SessionBus::~SessionBus() {
  g_cancellable_cancel(cancellable_.get());
  if (connection_ != nullptr) {
    g_signal_handler_disconnect(connection_.get(), closedHandler_);
    // What is still to be sent goes out on the way.
    g_dbus_connection_close(connection_.get(), nullptr, nullptr, nullptr);
  }
}

void SessionBus::connect() {
  const auto address = sessionBusAddress();
  if (!address) {
    connectionFailed("neither DBUS_SESSION_BUS_ADDRESS nor a bus in XDG_RUNTIME_DIR names one");
    return;
  }
  constexpr int flags = G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;
  g_dbus_connection_new_for_address(address->c_str(), static_cast<GDBusConnectionFlags>(flags),
                                    nullptr, cancellable_.get(), onConnected, this);
}

void SessionBus::onConnected(GObject* /*source*/, GAsyncResult* result, gpointer self) noexcept {
  GError* failure = nullptr;
  ConnectionHandle connection(g_dbus_connection_new_for_address_finish(result, &failure));
  const ErrorHandle error(failure);
  if (g_error_matches(failure, G_IO_ERROR, G_IO_ERROR_CANCELLED) == TRUE) {
    return;  // the bus object has gone
  }
  auto* bus = static_cast<SessionBus*>(self);
  if (connection != nullptr) {
    bus->connectionMade(std::move(connection));
  } else {
    bus->connectionFailed(messageOf(error));
  }
}

void SessionBus::connectionMade(ConnectionHandle connection) {
  connection_ = std::move(connection);
  closedHandler_ =
      g_signal_connect_data(connection_.get(), "closed", reinterpret_cast<GCallback>(onClosed),
                            this, nullptr, static_cast<GConnectFlags>(0));
  if (g_dbus_connection_is_closed(connection_.get()) == TRUE) {
    connectionClosed();
    return;
  }
  attempts_.reset();
  if (failureIsLogged_) {
    failureIsLogged_ = false;
    logger_->info("The session bus is there: the status item can be shown");
  }
  listener_.connected(connection_.get());
}

void SessionBus::connectionFailed(const std::string& reason) {
  if (logger_ != nullptr && !failureIsLogged_) {
    failureIsLogged_ = true;
    logger_->error("No session bus, so no status item for now (recording goes on; trying again): " +
                   reason);
  }
  attempts_.attemptAgain();
}

void SessionBus::onClosed(GDBusConnection* /*connection*/, gboolean /*vanished*/, GError* /*error*/,
                          gpointer self) noexcept {
  static_cast<SessionBus*>(self)->connectionClosed();
}

void SessionBus::connectionClosed() {
  g_signal_handler_disconnect(connection_.get(), closedHandler_);
  listener_.disconnected();
  connection_.reset();
  connectionFailed("the connection was closed");
}

}  // namespace audrel::linuxos
