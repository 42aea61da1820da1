#include "tests/support/TemporaryFolder.h"

#include <stdlib.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

namespace audrel::support {

TemporaryFolder::TemporaryFolder() {
  std::error_code unknown;
  std::string path = (std::filesystem::temp_directory_path(unknown) / "audrel-XXXXXX").string();
  if (unknown || mkdtemp(path.data()) == nullptr) {
    throw std::runtime_error("No folder can be made at " + path);
  }
  path_ = path;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace audrel::support
