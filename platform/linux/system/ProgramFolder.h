#pragma once

#include <filesystem>

/// Where this program lies. Nothing in the environment moves it.
namespace audrel::linuxos {

/// The folder of the program's own file. Empty when the system does not tell.
std::filesystem::path programFolder();

/// `name` in that folder, as the build leaves it, else in `installed`, a path from there. Empty
/// when it is in neither place.
std::filesystem::path partOfProgram(const char* name, const char* installed);

}  // namespace audrel::linuxos
