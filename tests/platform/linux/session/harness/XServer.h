#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "tests/fakes/ScopedVariable.h"
#include "tests/support/ChildProcess.h"

namespace audrel::sessiontest {

/// An X server without a screen, as this process's display. GTK programs find no desktop there but
/// what the test has.
class XServer {
 public:
  /// Throws `std::runtime_error` when it does not start.
  XServer();

  /// Ends it without notice.
  void crash();

  /// How many connections programs have to it now.
  std::size_t connections() const;

 private:
  std::unique_ptr<support::ChildProcess> server_;
  std::string number_;
  std::optional<fakes::ScopedVariable> display_;
  fakes::ScopedVariable backend_{"GDK_BACKEND", "x11"};
  fakes::ScopedVariable accessibility_{"NO_AT_BRIDGE", "1"};
  fakes::ScopedVariable settings_{"GSETTINGS_BACKEND", "memory"};

  /// Fonts and themes are kept until the process ends, which the leak check takes for leaks.
  fakes::ScopedVariable leaks_{"ASAN_OPTIONS", "detect_leaks=0"};
};

/// The user at the keyboard: waits until a window called "Audrel" shows, then presses the keys in
/// it. Works beside this process; when this object goes, the keys are up again.
class KeyPresses {
 public:
  explicit KeyPresses(const std::string& keys);
  ~KeyPresses();
  KeyPresses(const KeyPresses&) = delete;
  KeyPresses& operator=(const KeyPresses&) = delete;

 private:
  std::unique_ptr<support::ChildProcess> user_;
};

}  // namespace audrel::sessiontest
