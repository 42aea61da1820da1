#include "platform/Printable.h"

#include <cstddef>

#include "platform/Utf8.h"

namespace audrel {

std::string hexadecimal(std::uint32_t number, int digits) {
  constexpr std::string_view alphabet = "0123456789abcdef";
  std::string text;
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) {
    text.append(1, alphabet[number >> static_cast<unsigned>(shift) & 0xFU]);
  }
  return text;
}

std::string printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const auto [point, size] = firstCharacter(text);
    if (!point.has_value()) {
      shown.append("\\x").append(hexadecimal(static_cast<unsigned char>(text[0]), 2));
    } else if (isControl(*point)) {
      shown.append("\\x").append(hexadecimal(*point, 2));
    } else if (changesLayout(*point)) {
      shown.append("\\u").append(hexadecimal(*point, 4));
    } else {
      shown.append(text.substr(0, size));
    }
    text.remove_prefix(size);
  }
  return shown;
}

}  // namespace audrel
