#include "platform/linux/bus/SessionBus.h"

#include <utility>

#include "platform/linux/bus/BusAddress.h"

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

constexpr auto firstDelay = 250ms;
constexpr auto connectTimeout = 3s;
constexpr auto flushTimeout = 500ms;

/// The bus's own default: time to start a program that answers.
constexpr int answerTimeout = -1;

bool isCancelled(const ErrorHandle& error) {
  return g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) == TRUE;
}

struct PendingCall {
  SessionBus::Answered answered;
};

/// Nothing else of the program's happens meanwhile.
void flush(GDBusConnection* connection) {
  const MainContextHandle ownContext(g_main_context_new());
  g_main_context_push_thread_default(ownContext.get());
  bool isOver = false;
  {
    LoopSource timeout([&isOver] { isOver = true; });
    timeout.callAfter(flushTimeout);
    // Should its answer come later, nobody iterates the context to take it.
    g_dbus_connection_flush(
        connection, nullptr,
        [](GObject*, GAsyncResult*, gpointer flag) { *static_cast<bool*>(flag) = true; }, &isOver);
    while (!isOver) {
      g_main_context_iteration(ownContext.get(), TRUE);
    }
  }
  g_main_context_pop_thread_default(ownContext.get());
}

}  // namespace

SessionBus::SessionBus(std::shared_ptr<os::Logger> logger)
    : logger_(std::move(logger)),
      calls_(g_cancellable_new()),
      timeout_([this] {
        abandonAttempt();
        connectionFailed("it does not answer");
      }),
      attempts_(firstDelay, [this] { connect(); }) {
  attempts_.attemptSoon();
}

SessionBus::~SessionBus() {
  abandonAttempt();
  g_cancellable_cancel(calls_.get());
  if (connection_ != nullptr) {
    g_signal_handler_disconnect(connection_.get(), closedHandler_);
    // To close it comes before what is still to be sent, and so does the end of the process.
    flush(connection_.get());
    g_dbus_connection_close(connection_.get(), nullptr, nullptr, nullptr);
  }
}

// The connection

void SessionBus::connect() {
  if (attempt_ != nullptr || connection_ != nullptr) {
    return;
  }
  const auto address = sessionBusAddress();
  if (!address) {
    connectionFailed("neither DBUS_SESSION_BUS_ADDRESS nor a bus in XDG_RUNTIME_DIR names one");
    return;
  }
  attempt_.reset(g_cancellable_new());
  timeout_.callAfter(connectTimeout);
  constexpr int flags = G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;
  g_dbus_connection_new_for_address(address->c_str(), static_cast<GDBusConnectionFlags>(flags),
                                    nullptr, attempt_.get(), onConnected, this);
}

void SessionBus::onConnected(GObject* /*source*/, GAsyncResult* result, gpointer self) noexcept {
  GError* failure = nullptr;
  ConnectionHandle connection(g_dbus_connection_new_for_address_finish(result, &failure));
  const ErrorHandle error(failure);
  if (error != nullptr && isCancelled(error)) {
    return;  // the attempt was given up, or the bus object has gone
  }
  auto* bus = static_cast<SessionBus*>(self);
  bus->abandonAttempt();
  if (connection != nullptr) {
    bus->connectionMade(std::move(connection));
  } else {
    bus->connectionFailed(messageOf(error));
  }
}

void SessionBus::abandonAttempt() {
  timeout_.cancel();
  if (attempt_ != nullptr) {
    g_cancellable_cancel(attempt_.get());
    attempt_.reset();
  }
}

void SessionBus::connectionMade(ConnectionHandle connection) {
  connection_ = std::move(connection);
  closedHandler_ =
      g_signal_connect_data(connection_.get(), "closed", reinterpret_cast<GCallback>(onClosed),
                            this, nullptr, static_cast<GConnectFlags>(0));
  if (g_dbus_connection_is_closed(connection_.get()) == TRUE) {
    connectionLost();  // before anybody listened for it
    return;
  }
  attempts_.reset();
  if (std::exchange(failureIsLogged_, false)) {
    logger_->info("The session bus is there: the status item can be shown");
  }
  for (Listener* listener : listeners_) {
    listener->connected();
  }
  for (const Use& use : std::exchange(waiting_, {})) {
    use(connection_.get(), {});
  }
}

void SessionBus::connectionFailed(const std::string& reason) {
  if (logger_ != nullptr && !failureIsLogged_) {
    failureIsLogged_ = true;
    logger_->error("No session bus, so no status item for now (recording goes on; trying again): " +
                   reason);
  }
  attempts_.attemptAgain();
  for (const Use& use : std::exchange(waiting_, {})) {
    use(nullptr, "no session bus: " + reason);
  }
}

void SessionBus::onClosed(GDBusConnection* /*connection*/, gboolean /*vanished*/, GError* /*error*/,
                          gpointer self) noexcept {
  static_cast<SessionBus*>(self)->connectionLost();
}

void SessionBus::connectionLost() {
  g_signal_handler_disconnect(connection_.get(), closedHandler_);
  for (Listener* listener : listeners_) {
    listener->disconnected();
  }
  connection_.reset();
  connectionFailed("the connection was closed");
}

// Its use

void SessionBus::withConnection(Use use) {
  if (connection_ != nullptr && g_dbus_connection_is_closed(connection_.get()) == TRUE) {
    connectionLost();  // it has not told so yet
  }
  if (connection_ != nullptr) {
    use(connection_.get(), {});
    return;
  }
  waiting_.push_back(std::move(use));
  connect();
}

ConnectionHandle SessionBus::connection() const {
  return ConnectionHandle(
      connection_ == nullptr ? nullptr : G_DBUS_CONNECTION(g_object_ref(connection_.get())));
}

void SessionBus::call(const Method& method, GVariant* arguments, Answered answered) {
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

void SessionBus::call(GDBusConnection* connection, const Method& method, GVariant* arguments,
                      Answered answered) {
  auto pending = std::make_unique<PendingCall>(PendingCall{std::move(answered)});
  g_dbus_connection_call(connection, method.service, method.path, method.interface, method.member,
                         arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, answerTimeout, calls_.get(),
                         onAnswer, pending.release());
}

void SessionBus::onAnswer(GObject* source, GAsyncResult* result, gpointer pending) noexcept {
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

// Who listens

SessionBus::Listener::Listener(SessionBus& bus, std::function<void(GDBusConnection*)> connected,
                               std::function<void()> disconnected)
    : bus_(bus),
      connected_(std::move(connected)),
      disconnected_(std::move(disconnected)),
      firstTime_([this] { this->connected(); }) {
  bus_.listeners_.push_back(this);
  if (bus_.connection_ != nullptr) {
    firstTime_.callSoon();
  }
}

SessionBus::Listener::~Listener() {
  bus_.listeners_.remove(this);
}

void SessionBus::Listener::connected() {
  firstTime_.cancel();
  isConnected_ = true;
  connected_(bus_.connection_.get());
}

void SessionBus::Listener::disconnected() {
  firstTime_.cancel();
  if (std::exchange(isConnected_, false)) {
    disconnected_();
  }
}

}  // namespace audrel::linuxos
