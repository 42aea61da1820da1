#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>
#include <vector>

namespace audrel::traytest {

/// A desktop's session manager with one client at most, on a bus of the test's own. On the main
/// thread's default context, which the test runs.
class DesktopSessionManager {
 public:
  enum class Desktop { gnome, xfce };

  DesktopSessionManager(const std::string& busAddress, Desktop desktop);
  ~DesktopSessionManager();
  DesktopSessionManager(const DesktopSessionManager&) = delete;
  DesktopSessionManager& operator=(const DesktopSessionManager&) = delete;

  /// What clients said, as "Method(arguments)".
  const std::vector<std::string>& calls() const { return calls_; }

  /// Sends a signal to the client at `path`.
  void tell(const std::string& path, const std::string& signal);

  static constexpr const char* clientPath = "/test/Client7";

 private:
  static void onCall(GDBusConnection* connection, const char* sender, const char* path,
                     const char* interface, const char* method, GVariant* arguments,
                     GDBusMethodInvocation* invocation, gpointer self);
  void exportObject(const char* path, const std::string& interface, const std::string& methods);

  GDBusConnection* connection_ = nullptr;
  std::string clientInterface_;
  std::vector<guint> objects_;
  guint name_ = 0;
  std::vector<std::string> calls_;
};

}  // namespace audrel::traytest
