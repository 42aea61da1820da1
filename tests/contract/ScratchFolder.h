#pragma once

#include <filesystem>
#include <string>

namespace audrel::contract {

/// A new folder in the system's temporary one, which goes with everything in it.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

}  // namespace audrel::contract
