#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "platform/Log.h"

namespace audrel::linuxos {

/// Keeps the machine awake while something is recorded: a block on "sleep" with the login manager
/// (org.freedesktop.login1 on the system bus), which desktops heed when they are idle and ask the
/// user about when they are told to suspend. A lid that is closed suspends all the same. Where
/// there is no login manager, nothing is blocked, and the log says so once.
///
/// Nothing here waits for the bus, whatever hangs there. Needs no main loop. Each operation on one
/// thread at a time.
class SuspendInhibitor {
 public:
  explicit SuspendInhibitor(std::shared_ptr<os::Logger> logger);
  ~SuspendInhibitor();
  SuspendInhibitor(const SuspendInhibitor&) = delete;
  SuspendInhibitor& operator=(const SuspendInhibitor&) = delete;

  /// Asks for the block on a thread of its own, which gives up after two seconds. Nothing if it is
  /// held, or asked for.
  void hold();

  /// Ends the block, within a moment, and a `hold` that is still to be answered. Nothing if none is
  /// held.
  void release();

 private:
  class Inhibition;

  void tellOnce(const std::string& reason);

  std::shared_ptr<os::Logger> logger_;
  std::atomic<bool> isTold_ = false;
  std::unique_ptr<Inhibition> inhibition_;
  std::unique_ptr<Inhibition> ending_;  ///< the one before, on its way out
};

}  // namespace audrel::linuxos
