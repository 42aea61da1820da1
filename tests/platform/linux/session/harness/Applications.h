#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace audrel::sessiontest {

/// The applications of this process's desktop, instead of the machine's. GIO looks for them once:
/// made before anything else asks it, one for the whole process.
class Applications {
 public:
  struct Application {
    std::string id;  ///< the entry's file name without ".desktop"

    /// What it is the user's program for, such as "x-scheme-handler/https".
    std::vector<std::string> types;
  };

  explicit Applications(const std::vector<Application>& installed);

  /// The applications that were started since the last call, as "id URI" or "id", sorted by time.
  /// Waits for the first.
  std::vector<std::string> takeStarted();

 private:
  void install(const Application& application) const;

  support::TemporaryFolder folder_;
  std::filesystem::path log_ = folder_.path() / "started";
};

}  // namespace audrel::sessiontest
