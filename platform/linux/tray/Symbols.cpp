#include "platform/linux/tray/Symbols.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace audrel::linuxos {

namespace {

constexpr double outerRadius = 0.47;
constexpr double innerRadius = 0.41;
constexpr double halfSquare = 0.4375;  // its edges fall between the dots of most sizes
constexpr double cornerRadius = 0.12;

struct Bar {
  double x;           ///< of its middle
  double halfHeight;  ///< without the round ends
};

// Far enough from each other to stay apart in 16 dots. The icons in packaging/linux/icons have the
// same shapes.
constexpr double barHalfWidth = 0.04;
constexpr std::array bars = {Bar{0.19, 0.02}, Bar{0.345, 0.14}, Bar{0.50, 0.24}, Bar{0.655, 0.11},
                             Bar{0.81, 0.04}};

bool waveformCovers(double x, double y) {
  return std::ranges::any_of(bars, [x, y](const Bar& bar) {
    const double beyondEnd = std::max(0.0, std::abs(y - 0.5) - bar.halfHeight);
    return std::hypot(x - bar.x, beyondEnd) <= barHalfWidth;
  });
}

bool squareCovers(double x, double y) {
  constexpr double straight = halfSquare - cornerRadius;
  const double beyondX = std::max(0.0, std::abs(x - 0.5) - straight);
  const double beyondY = std::max(0.0, std::abs(y - 0.5) - straight);
  return std::hypot(beyondX, beyondY) <= cornerRadius;
}

}  // namespace

bool isSymbol(std::string_view name) {
  return name == waveformInRing || name == waveformInDisc;
}

bool symbolCovers(std::string_view name, double x, double y) {
  const double radius = std::hypot(x - 0.5, y - 0.5);
  if (name == waveformInRing) {
    return (radius <= outerRadius && radius >= innerRadius) || waveformCovers(x, y);
  }
  const bool isGround = (name == waveformInDisc && radius <= outerRadius) ||
                        (name == waveformInSquare && squareCovers(x, y));
  return isGround && !waveformCovers(x, y);
}

}  // namespace audrel::linuxos
