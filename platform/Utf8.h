#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace audrel {

/// The first character of a text.
struct Utf8Character {
  std::optional<char32_t> codePoint;  ///< nothing: the byte begins no valid character
  std::size_t size = 0;               ///< in bytes; 1 when invalid
};

/// `text` must not be empty. Overlong forms, surrogates and all beyond U+10FFFF are invalid.
Utf8Character firstCharacter(std::string_view text);

/// Those of ASCII and of Latin-1: a terminal acts on them.
constexpr bool isControl(char32_t point) {
  return point < 0x20 || (point >= 0x7F && point <= 0x9F);
}

/// Marks that change the direction of writing, and separators of lines.
constexpr bool changesLayout(char32_t point) {
  return point == 0x061C || point == 0x200E || point == 0x200F ||
         (point >= 0x2028 && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069);
}

}  // namespace audrel
