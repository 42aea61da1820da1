#include "cli/Numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace audrel::cli {

std::string withDecimals(double number, int decimals) {
  const double scale = std::pow(10, decimals);
  const double rounded = std::round(number * scale) / scale;
  constexpr std::size_t room = 340;  // the digits of the largest double, sign and decimals
  std::array<char, room> text{};
  const auto result =
      std::to_chars(text.data(), text.data() + text.size(), rounded == 0 ? 0.0 : rounded,
                    std::chars_format::fixed, decimals);
  return result.ec == std::errc{} ? std::string(text.data(), result.ptr) : "?";
}

std::string formatByteCount(std::uintmax_t bytes) {
  constexpr std::array<std::string_view, 5> units = {" B", " kB", " MB", " GB", " TB"};
  constexpr std::uintmax_t step = 1000;
  std::uintmax_t unit = 1;
  std::size_t index = 0;
  while (bytes / unit >= step && index + 1 < units.size()) {
    unit *= step;
    ++index;
  }
  constexpr std::size_t megabytes = 2;
  const int decimals = index >= megabytes ? 1 : 0;
  const auto number = static_cast<double>(bytes) / static_cast<double>(unit);
  return withDecimals(number, decimals).append(units.at(index));
}

}  // namespace audrel::cli
