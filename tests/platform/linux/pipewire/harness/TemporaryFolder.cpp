#include "tests/platform/linux/pipewire/harness/TemporaryFolder.h"

#include <cstdlib>
#include <string>
#include <system_error>

namespace audrel::pwtest {

TemporaryFolder::TemporaryFolder() {
  std::error_code error;
  std::string path = (std::filesystem::temp_directory_path(error) / "audrel-test-XXXXXX").string();
  if (mkdtemp(path.data()) != nullptr) {
    path_ = path;
  }
}

TemporaryFolder::~TemporaryFolder() {
  if (!path_.empty()) {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
}

}  // namespace audrel::pwtest
