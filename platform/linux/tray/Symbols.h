#pragma once

#include <string_view>

namespace audrel::linuxos {

/// The symbols that this platform has; they keep the names that the program knows them by.
inline constexpr std::string_view waveformInRing = "waveform.circle";
inline constexpr std::string_view waveformInDisc = "waveform.circle.fill";

bool isSymbol(std::string_view name);

/// Whether the symbol has ink at a point of the unit square. False for names that are no symbol.
bool symbolCovers(std::string_view name, double x, double y);

}  // namespace audrel::linuxos
