#pragma once

#include <span>
#include <string>
#include <string_view>

namespace audrel::linuxos {

struct Wording {
  std::string_view program;  ///< a whole text of the program
  std::string_view desktop;  ///< the same, in the words of a Linux desktop
};

/// All texts that have another word here for the same thing.
std::span<const Wording> wordings();

/// What the user reads for a title or text of the program. Only whole texts change, never a part
/// of one: an application may well be called Finder.
std::string desktopWording(std::string_view text);

}  // namespace audrel::linuxos
