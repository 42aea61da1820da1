#pragma once

#include <string_view>

namespace audrel::linuxos {

/// The symbols of the program, by the names that it knows them by.
inline constexpr std::string_view waveformInRing = "waveform.circle";
inline constexpr std::string_view waveformInDisc = "waveform.circle.fill";

/// One of our own: to tell from a disc also by who sees no colours.
inline constexpr std::string_view waveformInSquare = "waveform.square.fill";

/// Whether the program may ask for it.
bool isSymbol(std::string_view name);

/// Whether the symbol has ink at a point of the unit square. False for names that are no symbol.
bool symbolCovers(std::string_view name, double x, double y);

}  // namespace audrel::linuxos
