#pragma once

#include <string>

#include "tests/platform/linux/session/harness/TestService.h"

namespace audrel::sessiontest {

/// What tells two desktops' session managers apart.
struct SessionManagerKind {
  const char* name;
  const char* path;
  const char* interface;
  const char* clientInterface;
};

constexpr SessionManagerKind gnomeSessionManager = {
    "org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager",
    "org.gnome.SessionManager.ClientPrivate"};
constexpr SessionManagerKind xfceSessionManager = {
    "org.xfce.SessionManager", "/org/xfce/SessionManager", "org.xfce.Session.Manager",
    "org.xfce.Session.Client"};

/// A desktop's session manager with one client at most.
class DesktopSessionManager : public TestService {
 public:
  DesktopSessionManager(const std::string& busAddress, const SessionManagerKind& kind)
      : TestService(
            busAddress, kind.name, {kind.path, clientPath},
            {{std::string(kind.interface) + ".RegisterClient", "(objectpath '/test/Client7',)"},
             {std::string(kind.clientInterface) + ".EndSessionResponse", "()"}}),
        clientInterface_(kind.clientInterface) {}

  /// Sends a signal to the client at `path`.
  void tell(const std::string& path, const std::string& signal) {
    emitSignal(path, clientInterface_, signal,
               signal == "Stop" ? nullptr : g_variant_new("(u)", 0U));
  }

  static constexpr const char* clientPath = "/test/Client7";

 private:
  std::string clientInterface_;
};

}  // namespace audrel::sessiontest
