#pragma once

#include <optional>
#include <string>

/// Other programs, started as the desktop's menus do. What is started may outlive this process, and
/// no loss of the session bus reaches this process through it. A bus that does not answer is waited
/// for, three seconds at most, while the main loop's events go on.
namespace audrel::linuxos {

/// Opens `uri` with the user's program for it. Why not, if not.
std::optional<std::string> openUri(const std::string& uri);

/// Starts the program of a desktop entry, by the entry's file name; whether there is one that
/// starts.
bool startDesktopEntry(const std::string& id);

}  // namespace audrel::linuxos
