#pragma once

#include <filesystem>
#include <optional>

#include "platform/Foundation.h"

namespace audrel::linuxos {

/// The user's folders by the XDG conventions.
class FileManager final : public NS::FileManager {
 public:
  /// XDG_DOWNLOAD_DIR of the user's `user-dirs.dirs`, else of the environment; "Downloads" in the
  /// home folder when neither has an absolute path, or when it is the home folder, which is how
  /// users say that they want no such folder. It is made when it is missing, as desktops do at
  /// login, but not the folder that it is in: the disk may be absent.
  std::optional<std::filesystem::path> downloadsDirectory() override;

  /// HOME, else what the user database has.
  std::filesystem::path homeDirectoryForCurrentUser() override;

  bool fileExists(const std::filesystem::path& path) override;

  /// A link that leads nowhere counts: a file cannot be made in its place.
  bool nameIsTaken(const std::filesystem::path& path) override;
};

}  // namespace audrel::linuxos
