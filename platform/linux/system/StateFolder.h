#pragma once

#include <filesystem>

namespace audrel::linuxos {

/// Where the program keeps what it has to remember from one run to the next: "audrel" in
/// XDG_STATE_HOME, else in ".local/state" of the home folder. It may be missing.
std::filesystem::path stateFolder(const std::filesystem::path& home);

}  // namespace audrel::linuxos
