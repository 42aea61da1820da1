#include "platform/Utf8.h"

#include <array>

namespace audrel {

namespace {

/// What the lead byte of a sequence of `size` bytes looks like, and the least code point that needs
/// that many.
struct Form {
  std::size_t size;
  unsigned char leadMask;
  unsigned char lead;
  char32_t least;
};

constexpr std::array<Form, 4> forms = {{
    {1, 0x80, 0x00, 0x00},
    {2, 0xE0, 0xC0, 0x80},
    {3, 0xF0, 0xE0, 0x800},
    {4, 0xF8, 0xF0, 0x10000},
}};

constexpr bool isSurrogate(char32_t point) {
  return point >= 0xD800 && point <= 0xDFFF;
}

std::optional<char32_t> decode(std::string_view bytes, const Form& form) {
  auto point = static_cast<char32_t>(static_cast<unsigned char>(bytes[0]) & ~form.leadMask & 0xFFU);
  for (std::size_t i = 1; i < form.size; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if ((byte & 0xC0U) != 0x80U) {
      return std::nullopt;
    }
    point = point << 6U | (byte & 0x3FU);
  }
  constexpr char32_t last = 0x10FFFF;
  if (point < form.least || point > last || isSurrogate(point)) {
    return std::nullopt;
  }
  return point;
}

}  // namespace

Utf8Character firstCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  for (const auto& form : forms) {
    if ((first & form.leadMask) == form.lead && text.size() >= form.size) {
      const auto point = decode(text, form);
      return {point, point.has_value() ? form.size : 1};
    }
  }
  return {std::nullopt, 1};
}

}  // namespace audrel
