#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/AppKit.h"

namespace audrel::linuxos {

struct Rgb {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;

  bool operator==(const Rgb&) const = default;
};

inline constexpr Rgb systemRed{0xe0, 0x1b, 0x24};
inline constexpr Rgb systemOrange{0xff, 0x78, 0x00};

struct Picture;

/// A symbol over the whole picture, in black.
struct SymbolStep {
  std::string name;

  bool operator==(const SymbolStep&) const = default;
};

/// Another picture, as it was then, over what is there already.
struct PictureStep {
  std::shared_ptr<const Picture> picture;
  NS::Rect rect;

  bool operator==(const PictureStep& other) const;
};

/// A colour where there is something already.
struct FillStep {
  Rgb color;
  NS::Rect rect;

  bool operator==(const FillStep&) const = default;
};

/// What an image was made from, step by step, so that it can be told what it shows and be drawn at
/// any size. Points, the origin at the lower left.
struct Picture {
  NS::Size size;
  bool isTemplate = false;  ///< only its shape counts: who shows it chooses the colour
  std::vector<std::variant<SymbolStep, PictureStep, FillStep>> steps;

  bool operator==(const Picture&) const = default;
};

/// A symbol and the one colour that all of it was filled with.
struct TintedSymbol {
  std::string name;
  std::optional<Rgb> tint;

  bool operator==(const TintedSymbol&) const = default;
};

/// Nothing when the picture is something else than a symbol with or without a tint.
std::optional<TintedSymbol> tintedSymbolOf(const Picture& picture);

}  // namespace audrel::linuxos
