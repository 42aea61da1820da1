#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace audrel {

/// `text` for a terminal. Programs choose their names and users name files, so control characters,
/// those that change the direction of writing and bytes that are no UTF-8 are made visible, as
/// "\x1b" or "\u202e"; all the rest stays.
std::string printable(std::string_view text);

/// The last `digits` hexadecimal digits of `number`, in lower case.
std::string hexadecimal(std::uint32_t number, int digits);

}  // namespace audrel
