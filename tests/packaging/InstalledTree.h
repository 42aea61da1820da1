#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace audrel::packaging {

/// What `cmake --install` makes of this build, in a folder of the test's own that stands for the
/// root of the file system.
class InstalledTree {
 public:
  /// Installed at the first call, and removed when the process ends.
  static const InstalledTree& shared();

  /// The first thing that a test asserts.
  bool isInstalled() const { return isInstalled_; }

  /// Where the file is that users will have at `path`, an absolute one.
  std::filesystem::path here(const std::filesystem::path& path) const;

  /// The prefix, here.
  std::filesystem::path prefix() const { return here(AUDREL_INSTALL_PREFIX); }

  /// Every file, as paths from the root of users' file systems.
  std::vector<std::string> files() const;

 private:
  InstalledTree();

  support::TemporaryFolder root_;
  bool isInstalled_ = false;
};

}  // namespace audrel::packaging
