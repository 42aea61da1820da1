#pragma once

#include <optional>
#include <string>

namespace audrel::linuxos {

/// An application as the desktop's menus know it.
struct DesktopEntry {
  std::string id;    ///< the entry file's name without ".desktop"
  std::string name;  ///< in the user's language
};

/// The entry with that id, of the user's and the system's folders.
std::optional<DesktopEntry> desktopEntryById(const std::string& id);

/// The entry, among those that menus show, that starts the program at `executable` (an absolute
/// path); nothing when there is none.
std::optional<DesktopEntry> desktopEntryOfExecutable(const std::string& executable);

/// Whether the entry is one of a terminal: what runs in it is in its scope, and is not it.
bool isTerminal(const DesktopEntry& entry);

}  // namespace audrel::linuxos
