#pragma once

#include <string>
#include <string_view>

namespace audrel::linuxos {

/// A name that another program chose, as it goes into menus, logs and files: `printable`, of its
/// first 256 characters.
std::string shownName(std::string_view name);

}  // namespace audrel::linuxos
