#include "cli/Json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

#include "platform/Printable.h"
#include "platform/Utf8.h"

namespace audrel::cli {

std::string jsonString(std::string_view text) {
  std::string json = "\"";
  while (!text.empty()) {
    const auto [point, size] = firstCharacter(text);
    if (!point.has_value()) {
      json.append("\\ufffd");
    } else if (*point == '"' || *point == '\\') {
      json.append("\\").append(text.substr(0, 1));
    } else if (isControl(*point)) {  // JSON minds the first ones alone, but terminals show JSON
      json.append("\\u").append(hexadecimal(*point, 4));
    } else {
      json.append(text.substr(0, size));
    }
    text.remove_prefix(size);
  }
  return json.append("\"");
}

std::string jsonString(const std::optional<std::string>& text) {
  return text.has_value() ? jsonString(std::string_view(*text)) : "null";
}

std::string jsonNumber(std::optional<double> number) {
  if (!number.has_value() || !std::isfinite(*number)) {
    return "null";
  }
  constexpr std::size_t longestDouble = 330;  // the digits of the largest, and a sign
  std::array<char, longestDouble> text{};
  const auto result =
      std::to_chars(text.data(), text.data() + text.size(), *number, std::chars_format::fixed);
  return result.ec == std::errc{} ? std::string(text.data(), result.ptr) : "null";
}

std::string jsonObject(const std::vector<std::pair<std::string_view, std::string>>& members) {
  std::string json = "{";
  for (const auto& [key, value] : members) {
    json.append(json.size() > 1 ? ", \"" : "\"").append(key).append("\": ").append(value);
  }
  return json.append("}");
}

}  // namespace audrel::cli
