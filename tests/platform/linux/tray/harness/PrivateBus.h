#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::traytest {

/// A session bus of the test's own. Made and used on the main thread.
class PrivateBus {
 public:
  /// A bus that starts no services, or those of a folder.
  explicit PrivateBus(const std::filesystem::path& services = {});

  /// Whether the bus listens; the first thing that a test asserts.
  bool isRunning() const { return isListening_; }

  std::string address() const { return "unix:path=" + socket().string(); }

  /// Ends the bus without notice.
  void crash();

  /// Starts it again, at the same address.
  void restart();

 private:
  std::filesystem::path socket() const { return folder_.path() / "bus"; }

  support::TemporaryFolder folder_;
  std::unique_ptr<support::ChildProcess> daemon_;
  bool isListening_ = false;
};

}  // namespace audrel::traytest
