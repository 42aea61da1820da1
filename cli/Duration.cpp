#include "cli/Duration.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <system_error>

namespace audrel::cli {

namespace {

using Seconds = std::int64_t;

constexpr Seconds minute = 60;
constexpr Seconds hour = 60 * minute;
constexpr Seconds longest = hour * 24 * 366;

/// Takes the decimal digits that `text` begins with; nothing when there are none or too many.
std::optional<Seconds> takeNumber(std::string_view& text) {
  const auto digits = std::min(text.find_first_not_of("0123456789"), text.size());
  Seconds number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + digits, number);
  if (error != std::errc{} || number > longest) {
    return std::nullopt;
  }
  text.remove_prefix(digits);
  return number;
}

std::optional<Seconds> parseClock(std::string_view text) {
  auto total = takeNumber(text);
  for (int fields = 1; total.has_value() && !text.empty(); ++fields) {
    constexpr int mostFields = 3;
    constexpr std::size_t mostDigits = 2;
    if (fields == mostFields || !text.starts_with(':')) {
      return std::nullopt;
    }
    text.remove_prefix(1);
    const auto sizeBefore = text.size();
    const auto field = takeNumber(text);
    if (!field.has_value() || sizeBefore - text.size() > mostDigits || *field >= minute) {
      return std::nullopt;
    }
    total = *total * minute + *field;
  }
  return total;
}

std::optional<Seconds> parseUnits(std::string_view text) {
  struct Unit {
    char letter;
    Seconds seconds;
  };
  constexpr std::array<Unit, 3> units = {{{'h', hour}, {'m', minute}, {'s', 1}}};
  Seconds total = 0;
  for (const auto* unit = units.begin(); !text.empty(); ++unit) {
    const auto number = takeNumber(text);
    if (!number.has_value() || text.empty()) {
      return std::nullopt;
    }
    unit = std::find_if(unit, units.end(), [&](const Unit& u) { return u.letter == text.front(); });
    if (unit == units.end()) {
      return std::nullopt;
    }
    text.remove_prefix(1);
    total += *number * unit->seconds;
  }
  return total;
}

std::string twoDigits(Seconds number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

std::optional<std::chrono::seconds> parseDuration(std::string_view text) {
  const bool hasUnits = !text.empty() && (text.back() < '0' || text.back() > '9');
  const auto seconds = hasUnits ? parseUnits(text) : parseClock(text);
  if (!seconds.has_value() || *seconds <= 0 || *seconds > longest) {
    return std::nullopt;
  }
  return std::chrono::seconds(*seconds);
}

std::string formatDuration(std::chrono::seconds duration) {
  const Seconds total = std::max<Seconds>(duration.count(), 0);
  const auto secondsText = twoDigits(total % minute);
  const auto minutes = total % hour / minute;
  if (total < hour) {
    return std::to_string(minutes) + ":" + secondsText;
  }
  return std::to_string(total / hour) + ":" + twoDigits(minutes) + ":" + secondsText;
}

}  // namespace audrel::cli
