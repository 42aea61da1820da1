#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/MainLoop.h"

namespace audrel::traytest {

struct VariantRelease {
  void operator()(GVariant* value) const { g_variant_unref(value); }
};
using Variant = std::unique_ptr<GVariant, VariantRelease>;

/// What a bus call came back with.
struct Answer {
  std::string value;  ///< the result tuple in GVariant's text format, types included
  std::string error;  ///< the D-Bus error's name; empty when the call succeeded

  bool operator==(const Answer&) const = default;
};

struct ItemInMenu {
  int id = 0;
  std::map<std::string, std::string> properties;  ///< values in GVariant's text format
  std::vector<ItemInMenu> children;
};

/// A desktop's panel: watcher of status items, host and menu client, on a bus of the test's own.
/// Everything happens in calls to it, on the main thread's default context.
class Panel {
 public:
  explicit Panel(const std::string& busAddress);
  ~Panel();
  Panel(const Panel&) = delete;
  Panel& operator=(const Panel&) = delete;

  /// Owns the watcher's name from now on, and answers `registrationErrors` registrations with an
  /// error first.
  void startWatcher(bool hasHost = true, int registrationErrors = 0);
  void stopWatcher();

  /// A panel comes to a watcher that had none.
  void addHost();

  /// The names that items were registered under, in order.
  const std::vector<std::string>& registrations() const { return registrations_; }

  /// Waits until an item was registered, and watches its signals from then on. False after ten
  /// seconds.
  bool findItem();

  /// Runs the panel until `condition` holds. False when it does not in ten seconds.
  bool runUntil(const std::function<bool()>& condition) { return support::runLoopUntil(condition); }
  void runFor(std::chrono::milliseconds duration) { support::runLoopFor(duration); }

  /// The item's unique name.
  const std::string& item() const { return item_; }

  /// A call to the item. `arguments` in GVariant's text format, as a tuple.
  Answer call(const std::string& path, const std::string& interface, const std::string& method,
              const std::string& arguments);
  Answer callMenu(const std::string& method, const std::string& arguments);

  /// A call to any program, by its name on the bus.
  Answer callTo(const std::string& program, const std::string& path, const std::string& interface,
                const std::string& method, const std::string& arguments);

  /// The same for a caller that wants no answer: returns at once.
  void send(const std::string& program, const std::string& path, const std::string& interface,
            const std::string& method, const std::string& arguments);

  /// All properties of an interface, by name, values in GVariant's text format.
  std::map<std::string, std::string> properties(const std::string& path,
                                                const std::string& interface);

  /// One property of the item, in GVariant's text format; nothing when it has none such.
  std::optional<std::string> itemProperty(const std::string& name);

  /// The whole menu. Ids of its items are read again each time.
  ItemInMenu layout();

  /// The whole menu, one line an item, indented by two spaces a level: the label, then everything
  /// else that the item says of itself.
  std::string menuText();

  /// The id of the first item with that label; nothing when there is none.
  std::optional<int> idOf(const std::string& label);

  /// The item's signals since the last call: name and arguments.
  std::vector<std::string> takeSignals();

 private:
  struct Reply {
    Variant value;
    std::string error;
  };
  Reply request(const std::string& program, const std::string& path, const std::string& interface,
                const std::string& method, const std::string& arguments);
  void registerItem(GDBusMethodInvocation* invocation, const std::string& name);
  void emitFromWatcher(const char* signal, const std::string& argument);

  static void onWatcherCall(GDBusConnection* connection, const char* sender, const char* path,
                            const char* interface, const char* method, GVariant* arguments,
                            GDBusMethodInvocation* invocation, gpointer self);
  static GVariant* onWatcherProperty(GDBusConnection* connection, const char* sender,
                                     const char* path, const char* interface, const char* property,
                                     GError** error, gpointer self);
  static void onSignal(GDBusConnection* connection, const char* sender, const char* path,
                       const char* interface, const char* signal, GVariant* arguments,
                       gpointer self);

  GDBusConnection* connection_ = nullptr;
  guint watcherObject_ = 0;
  guint watcherName_ = 0;
  guint itemSignals_ = 0;
  bool hasHost_ = false;
  int registrationErrors_ = 0;
  std::vector<std::string> registrations_;
  std::string item_;
  std::vector<std::string> signals_;
};

}  // namespace audrel::traytest
