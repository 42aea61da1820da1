#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace audrel::cli {

/// `text` as a JSON string, quotes included; bytes that are no UTF-8 become U+FFFD.
std::string jsonString(std::string_view text);

/// "null" for nothing.
std::string jsonString(const std::optional<std::string>& text);

/// As plain digits, whatever the locale; "null" for nothing and for what is not finite.
std::string jsonNumber(std::optional<double> number);

/// An object in one line. Values are JSON already; keys are plain ASCII.
std::string jsonObject(const std::vector<std::pair<std::string_view, std::string>>& members);

}  // namespace audrel::cli
