#include "platform/Printable.h"

#include <cstddef>
#include <cstdint>

#include "platform/Utf8.h"

namespace audrel {

namespace {

void appendHex(std::string& text, std::uint32_t number, int digits) {
  constexpr std::string_view alphabet = "0123456789abcdef";
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) {
    text.append(1, alphabet[number >> static_cast<unsigned>(shift) & 0xFU]);
  }
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const auto [point, size] = firstCharacter(text);
    if (!point.has_value()) {
      appendHex(shown.append("\\x"), static_cast<unsigned char>(text[0]), 2);
    } else if (isControl(*point)) {
      appendHex(shown.append("\\x"), *point, 2);
    } else if (changesLayout(*point)) {
      appendHex(shown.append("\\u"), *point, 4);
    } else {
      shown.append(text.substr(0, size));
    }
    text.remove_prefix(size);
  }
  return shown;
}

}  // namespace audrel
