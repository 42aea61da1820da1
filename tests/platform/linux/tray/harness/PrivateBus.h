#pragma once

#include <gio/gio.h>

#include <filesystem>
#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::traytest {

/// A connection of its own to the bus at that address. Throws `std::runtime_error` without one.
GDBusConnection* connectTo(const std::string& busAddress);

/// A session bus of the test's own. Made and used on the main thread. Throws `std::runtime_error`
/// when no bus can be started.
class PrivateBus {
 public:
  /// A bus that starts no services, or those of a folder.
  explicit PrivateBus(const std::filesystem::path& services = {});

  std::string address() const { return "unix:path=" + socket().string(); }

  /// Ends the bus without notice.
  void crash();

  /// From now on it reads and writes nothing.
  void hang();

  /// Starts it again, at the same address.
  void restart();

 private:
  std::filesystem::path socket() const { return folder_.path() / "bus"; }

  support::TemporaryFolder folder_;
  std::unique_ptr<support::ChildProcess> daemon_;
};

}  // namespace audrel::traytest
