#include "platform/linux/tray/WatcherRegistration.h"

#include <utility>

namespace audrel::linuxos {

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* watcherInterface = "org.kde.StatusNotifierWatcher";

/// A watcher may own its name before it answers.
constexpr std::chrono::milliseconds firstDelay{500};

}  // namespace

WatcherRegistration::WatcherRegistration(GDBusConnection* connection,
                                         std::shared_ptr<os::Logger> logger,
                                         PanelObserver panelChanged,
                                         std::chrono::milliseconds patience)
    : connection_(connection),
      logger_(std::move(logger)),
      panelChanged_(std::move(panelChanged)),
      patience_(patience),
      cancellable_(g_cancellable_new()),
      attempts_(firstDelay, [this] { registerItem(); }),
      missingHost_([this] { tellOfMissingHost(); }) {
  watch_ = g_bus_watch_name_on_connection(
      connection_, watcherName, G_BUS_NAME_WATCHER_FLAGS_AUTO_START,
      [](GDBusConnection*, const char*, const char*, gpointer self) {
        static_cast<WatcherRegistration*>(self)->watcherAppeared();
      },
      [](GDBusConnection*, const char*, gpointer self) {
        static_cast<WatcherRegistration*>(self)->watcherVanished();
      },
      this, nullptr);
  hostSignal_ = g_dbus_connection_signal_subscribe(
      connection_, watcherName, watcherInterface, nullptr, watcherPath, nullptr,
      G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection*, const char*, const char*, const char*, const char* signal, GVariant*,
         gpointer self) {
        if (g_str_has_prefix(signal, "StatusNotifierHost") == TRUE) {
          static_cast<WatcherRegistration*>(self)->askForHost();
        }
      },
      this, nullptr);
  missingHost_.callAfter(patience_);
}

WatcherRegistration::~WatcherRegistration() {
  g_cancellable_cancel(cancellable_.get());
  g_dbus_connection_signal_unsubscribe(connection_, hostSignal_);
  g_bus_unwatch_name(watch_);
}

void WatcherRegistration::watcherAppeared() {
  hasWatcher_ = true;
  registerItem();
}

void WatcherRegistration::watcherVanished() {
  hasWatcher_ = false;
  attempts_.reset();
  setHasHost(false);
}

void WatcherRegistration::registerItem() {
  const char* item = g_dbus_connection_get_unique_name(connection_);
  g_dbus_connection_call(connection_, watcherName, watcherPath, watcherInterface,
                         "RegisterStatusNotifierItem", g_variant_new("(s)", item), nullptr,
                         G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, cancellable_.get(), onRegistered,
                         this);
}

void WatcherRegistration::onRegistered(GObject* source, GAsyncResult* result,
                                       gpointer self) noexcept {
  GError* failure = nullptr;
  const VariantHandle answer(
      g_dbus_connection_call_finish(reinterpret_cast<GDBusConnection*>(source), result, &failure));
  const ErrorHandle error(failure);
  if (g_error_matches(failure, G_IO_ERROR, G_IO_ERROR_CANCELLED) == TRUE) {
    return;  // the registration has gone
  }
  auto* registration = static_cast<WatcherRegistration*>(self);
  if (answer != nullptr) {
    registration->registered();
  } else {
    registration->refused();
  }
}

void WatcherRegistration::registered() {
  attempts_.reset();
  askForHost();
}

void WatcherRegistration::refused() {
  if (hasWatcher_) {
    attempts_.attemptAgain();
  }
}

void WatcherRegistration::askForHost() {
  g_dbus_connection_call(
      connection_, watcherName, watcherPath, "org.freedesktop.DBus.Properties", "Get",
      g_variant_new("(ss)", watcherInterface, "IsStatusNotifierHostRegistered"),
      reinterpret_cast<const GVariantType*>("(v)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, -1,
      cancellable_.get(), onHostKnown, this);
}

void WatcherRegistration::onHostKnown(GObject* source, GAsyncResult* result,
                                      gpointer self) noexcept {
  const VariantHandle answer(
      g_dbus_connection_call_finish(reinterpret_cast<GDBusConnection*>(source), result, nullptr));
  if (answer == nullptr) {
    return;  // asked again when the next watcher comes
  }
  GVariant* value = nullptr;
  g_variant_get(answer.get(), "(v)", &value);
  const VariantHandle hasHost(value);
  static_cast<WatcherRegistration*>(self)->setHasHost(
      g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) == TRUE &&
      g_variant_get_boolean(value) == TRUE);
}

void WatcherRegistration::setHasHost(bool hasHost) {
  if (std::exchange(hasHost_, hasHost) == hasHost) {
    return;
  }
  if (hasHost) {
    missingHost_.cancel();
    panelChanged_(true);
  } else {
    missingHost_.callAfter(patience_);
  }
}

void WatcherRegistration::tellOfMissingHost() const {
  logger_->error(
      "No panel of this desktop shows status items, so the menu cannot be reached there (GNOME "
      "needs its AppIndicator extension). Should one come, the item appears");
  panelChanged_(false);
}

}  // namespace audrel::linuxos
