#pragma once

#include <filesystem>
#include <string>

#include "platform/linux/aac/AacFunctions.h"

namespace audrel::linuxos {

/// The functions of the module that encodes AAC, which is loaded with the first call that finds it
/// and stays. It lies beside the program's own file, where it was built, or in the folder that is
/// installed with the program; nothing in the environment moves it. Null and a sentence in
/// `problem` when it cannot be used. Any thread.
const AudrelAacFunctions* aacFunctions(std::string* problem);

/// The same of that file; empty for one that was not found.
const AudrelAacFunctions* aacFunctionsOf(const std::filesystem::path& file, std::string* problem);

}  // namespace audrel::linuxos
