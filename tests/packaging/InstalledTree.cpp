#include "tests/packaging/InstalledTree.h"

#include <system_error>

#include "tests/support/RunTool.h"

namespace audrel::packaging {

namespace fs = std::filesystem;

const InstalledTree& InstalledTree::shared() {
  static const InstalledTree tree;
  return tree;
}

InstalledTree::InstalledTree() {
  isInstalled_ = support::runTool({AUDREL_CMAKE, "-E", "env", "DESTDIR=" + root_.path().string(),
                                   AUDREL_CMAKE, "--install", AUDREL_BINARY_DIR})
                     .exitCode == 0;
}

fs::path InstalledTree::here(const fs::path& path) const {
  return root_.path() / path.relative_path();
}

std::vector<std::string> InstalledTree::files() const {
  std::vector<std::string> files;
  std::error_code error;
  for (const auto& entry : fs::recursive_directory_iterator(root_.path(), error)) {
    if (!entry.is_directory(error)) {
      files.push_back("/" + entry.path().lexically_relative(root_.path()).string());
    }
  }
  return files;
}

}  // namespace audrel::packaging
