#pragma once

#include <string>
#include <string_view>

namespace audrel::linuxos {

/// A name that another program chose, as it goes into menus, logs and files: valid UTF-8 of at most
/// 256 characters, without control characters and marks that change the direction of writing. What
/// may not be is replaced by U+FFFD.
std::string shownName(std::string_view name);

}  // namespace audrel::linuxos
