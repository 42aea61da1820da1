#include "engine/LogText.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <variant>

namespace audrel {
namespace {

using Limits = std::numeric_limits<double>;

/// Room for the longest double in fixed notation: its sign, all digits before the point, the point
/// and as many decimals as the smallest one has.
constexpr int longestFixedDouble =
    3 + Limits::max_exponent10 - Limits::min_exponent10 + Limits::max_digits10;

using Digits = std::array<char, longestFixedDouble>;

struct DescribeValue {
  std::string operator()(std::uint32_t value) const { return std::to_string(value); }
  std::string operator()(std::int64_t value) const { return std::to_string(value); }
  std::string operator()(bool value) const { return value ? "true" : "false"; }

  /// The shortest text that reads back as the same number, with a decimal even when it is whole.
  std::string operator()(double value) const {
    Digits digits;
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed)
            .ptr;
    std::string text(digits.data(), end);
    if (text.find('.') == std::string::npos) {
      text += ".0";
    }
    return text;
  }
};

}  // namespace

std::string fixedNotation(double number, int decimals) {
  Digits digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                 std::chars_format::fixed, decimals)
                       .ptr;
  return {digits.data(), end};
}

std::string describe(const AV::Settings& settings) {
  std::string text = "[";
  const char* separator = "";
  for (const auto& [key, value] : settings) {
    text += separator;
    text += "\"" + key + "\": " + std::visit(DescribeValue{}, value);
    separator = ", ";
  }
  return text + "]";
}

}  // namespace audrel
