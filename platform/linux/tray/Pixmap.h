#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/tray/Picture.h"

namespace audrel::linuxos {

/// A square picture of dots as status areas take it: rows from the top, four bytes a dot (alpha,
/// red, green, blue; colours not multiplied by alpha).
struct Pixmap {
  int side = 0;
  std::vector<std::uint8_t> argb;

  bool operator==(const Pixmap&) const = default;
};

/// Draws the picture, fitted into the square and centred. A template is drawn in a grey that
/// stands out from light and from dark panels.
Pixmap drawPixmap(const Picture& picture, int side);

}  // namespace audrel::linuxos
