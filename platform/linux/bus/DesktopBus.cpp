#include "platform/linux/bus/DesktopBus.h"

#include <memory>
#include <utility>

#include "platform/linux/bus/BusAddress.h"

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

constexpr auto connectTimeout = 3s;

/// The bus's own default: time to start a program that answers.
constexpr int answerTimeout = -1;

bool isCancelled(const ErrorHandle& error) {
  return g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) == TRUE;
}

struct PendingCall {
  DesktopBus::Answered answered;
};

}  // namespace

DesktopBus::DesktopBus()
    : calls_(g_cancellable_new()), timeout_([this] {
        abandonAttempt();
        failed("the session bus does not answer");
      }) {}

DesktopBus::~DesktopBus() {
  abandonAttempt();
  g_cancellable_cancel(calls_.get());
  if (connection_ != nullptr) {
    g_signal_handler_disconnect(connection_.get(), closedHandler_);
    // What is still to be sent goes out on the way.
    g_dbus_connection_close(connection_.get(), nullptr, nullptr, nullptr);
  }
}

void DesktopBus::withConnection(Use use) {
  if (connection_ != nullptr && g_dbus_connection_is_closed(connection_.get()) == FALSE) {
    use(connection_.get(), {});
    return;
  }
  waiting_.push_back(std::move(use));
  if (attempt_ == nullptr) {
    connect();
  }
}

void DesktopBus::connect() {
  const auto address = sessionBusAddress();
  if (!address) {
    failed("this session has no bus");
    return;
  }
  attempt_.reset(g_cancellable_new());
  timeout_.callAfter(connectTimeout);
  constexpr int flags = G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;
  g_dbus_connection_new_for_address(address->c_str(), static_cast<GDBusConnectionFlags>(flags),
                                    nullptr, attempt_.get(), onConnected, this);
}

void DesktopBus::onConnected(GObject* /*source*/, GAsyncResult* result, gpointer self) noexcept {
  GError* failure = nullptr;
  ConnectionHandle connection(g_dbus_connection_new_for_address_finish(result, &failure));
  const ErrorHandle error(failure);
  if (error != nullptr && isCancelled(error)) {
    return;  // the attempt was given up, or the bus object has gone
  }
  auto* bus = static_cast<DesktopBus*>(self);
  bus->abandonAttempt();
  if (connection != nullptr) {
    bus->connected(std::move(connection));
  } else {
    bus->failed(messageOf(error));
  }
}

void DesktopBus::connected(ConnectionHandle connection) {
  if (connection_ != nullptr) {
    lost();  // it is closed, and has not told so yet
  }
  connection_ = std::move(connection);
  closedHandler_ =
      g_signal_connect_data(connection_.get(), "closed", reinterpret_cast<GCallback>(onClosed),
                            this, nullptr, static_cast<GConnectFlags>(0));
  if (g_dbus_connection_is_closed(connection_.get()) == TRUE) {
    lost();  // before anybody listened for it
    failed("the connection to the session bus was closed");
    return;
  }
  for (const Use& use : std::exchange(waiting_, {})) {
    use(connection_.get(), {});
  }
}

void DesktopBus::failed(const std::string& reason) {
  for (const Use& use : std::exchange(waiting_, {})) {
    use(nullptr, reason);
  }
}

void DesktopBus::abandonAttempt() {
  timeout_.cancel();
  if (attempt_ != nullptr) {
    g_cancellable_cancel(attempt_.get());
    attempt_.reset();
  }
}

void DesktopBus::onClosed(GDBusConnection* /*connection*/, gboolean /*vanished*/, GError* /*error*/,
                          gpointer self) noexcept {
  static_cast<DesktopBus*>(self)->lost();
}

void DesktopBus::lost() {
  g_signal_handler_disconnect(connection_.get(), closedHandler_);
  connection_.reset();
  if (lossObserver_) {
    lossObserver_();
  }
}

void DesktopBus::setLossObserver(std::function<void()> observer) {
  lossObserver_ = std::move(observer);
}

void DesktopBus::call(const Method& method, GVariant* arguments, Answered answered) {
  // Shared, since a function must be copyable.
  const std::shared_ptr<GVariant> owned(
      arguments == nullptr ? nullptr : g_variant_ref_sink(arguments),
      [](GVariant* variant) { VariantHandle{variant}; });
  withConnection([this, method, owned, answered = std::move(answered)](GDBusConnection* connection,
                                                                       const std::string& failure) {
    if (connection == nullptr) {
      answered({nullptr, failure});
    } else {
      call(connection, method, owned.get(), answered);
    }
  });
}

void DesktopBus::call(GDBusConnection* connection, const Method& method, GVariant* arguments,
                      Answered answered) {
  auto pending = std::make_unique<PendingCall>(PendingCall{std::move(answered)});
  g_dbus_connection_call(connection, method.service, method.path, method.interface, method.member,
                         arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, answerTimeout, calls_.get(),
                         onAnswer, pending.release());
}

void DesktopBus::onAnswer(GObject* source, GAsyncResult* result, gpointer pending) noexcept {
  const std::unique_ptr<PendingCall> call(static_cast<PendingCall*>(pending));
  GError* failure = nullptr;
  VariantHandle values(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &failure));
  const ErrorHandle error(failure);
  if (error == nullptr) {
    call->answered({std::move(values), {}});
  } else if (!isCancelled(error)) {
    g_dbus_error_strip_remote_error(error.get());
    call->answered({nullptr, messageOf(error)});
  }
}

}  // namespace audrel::linuxos
