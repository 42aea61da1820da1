#pragma once

#include <filesystem>
#include <string>

namespace audrel::support {

/// A new folder in the system's temporary one, for its user alone. It goes with this object, and
/// everything in it.
class TemporaryFolder {
 public:
  /// Throws `std::runtime_error` when no folder can be made.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

}  // namespace audrel::support
