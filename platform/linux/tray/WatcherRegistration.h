#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/Log.h"
#include "platform/linux/loop/BackOff.h"
#include "platform/linux/loop/GLibHandles.h"
#include "platform/linux/loop/LoopSource.h"

namespace audrel::linuxos {

/// Makes the status item of one bus connection known to the desktop's watcher of status items, as
/// often as a watcher comes, and for as long as this object lives. Registers under the
/// connection's unique name. Main thread.
class WatcherRegistration {
 public:
  /// Tells whether a panel shows the item.
  using PanelObserver = std::function<void(bool isThere)>;

  /// `connection` must outlive this object. `panelChanged` is called from the main loop when a
  /// panel shows the item, and when none does for as long as `patience`, which is logged, too: the
  /// user would look for it in vain. At the start of a session panels come later than we do.
  WatcherRegistration(GDBusConnection* connection, std::shared_ptr<os::Logger> logger,
                      PanelObserver panelChanged,
                      std::chrono::milliseconds patience = std::chrono::seconds(10));
  ~WatcherRegistration();
  WatcherRegistration(const WatcherRegistration&) = delete;
  WatcherRegistration& operator=(const WatcherRegistration&) = delete;

 private:
  void watcherAppeared();
  void watcherVanished();
  void registerItem();
  void registered();
  void refused();
  void askForHost();
  void setHasHost(bool hasHost);
  void tellOfMissingHost() const;

  static void onRegistered(GObject* source, GAsyncResult* result, gpointer self) noexcept;
  static void onHostKnown(GObject* source, GAsyncResult* result, gpointer self) noexcept;

  GDBusConnection* connection_;
  std::shared_ptr<os::Logger> logger_;
  PanelObserver panelChanged_;
  std::chrono::milliseconds patience_;
  CancellableHandle cancellable_;
  guint watch_ = 0;
  guint hostSignal_ = 0;
  BackOff attempts_;
  LoopSource missingHost_;
  bool hasWatcher_ = false;
  bool hasHost_ = false;
};

}  // namespace audrel::linuxos
