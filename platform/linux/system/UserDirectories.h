#pragma once

#include <filesystem>
#include <istream>
#include <optional>
#include <string_view>

namespace audrel::linuxos {

/// The folder that `file`, in the shell-like form of `user-dirs.dirs`, gives `name`
/// ("XDG_DOWNLOAD_DIR"): an absolute path or one below "$HOME", in double quotes, where a backslash
/// takes the next character as it is. The last line wins; nothing when no line is like that.
std::optional<std::filesystem::path> userDirectory(std::istream& file, std::string_view name,
                                                   const std::filesystem::path& home);

}  // namespace audrel::linuxos
