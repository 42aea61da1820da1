#pragma once

#include <optional>
#include <string>

namespace audrel::linuxos {

/// The value of an environment variable; nothing when it is unset or empty, which the conventions
/// for all that we read treat alike. The program never writes to its environment.
std::optional<std::string> environmentVariable(const char* name);

}  // namespace audrel::linuxos
