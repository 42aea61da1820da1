#include "cli/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <system_error>

#include "engine/LogText.h"

namespace audrel::cli {

namespace {

using Seconds = std::int64_t;
using Microseconds = std::int64_t;

constexpr Microseconds second = 1'000'000;
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

/// Takes the point and the decimals that `text` begins with, as microseconds of a second; nothing
/// when there are no decimals behind the point or too many.
std::optional<Microseconds> takeDecimals(std::string_view& text) {
  constexpr std::size_t most = 6;
  text.remove_prefix(1);
  const auto digits = std::min(text.find_first_not_of("0123456789"), text.size());
  if (digits == 0 || digits > most) {
    return std::nullopt;
  }
  auto padded = std::string(text.substr(0, digits)).append(most - digits, '0');
  text.remove_prefix(digits);
  std::string_view rest = padded;
  return takeNumber(rest);
}

std::optional<Microseconds> parseClock(std::string_view text) {
  auto total = takeNumber(text);
  for (int fields = 1; total.has_value() && text.starts_with(':'); ++fields) {
    constexpr int mostFields = 3;
    constexpr std::size_t mostDigits = 2;
    if (fields == mostFields) {
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
  const auto decimals = text.starts_with('.') ? takeDecimals(text) : Microseconds{0};
  if (!total.has_value() || !decimals.has_value() || !text.empty()) {
    return std::nullopt;
  }
  return *total * second + *decimals;
}

std::optional<Microseconds> parseUnits(std::string_view text) {
  struct Unit {
    char letter;
    Seconds seconds;
  };
  constexpr std::array<Unit, 3> units = {{{'h', hour}, {'m', minute}, {'s', 1}}};
  Microseconds total = 0;
  for (const auto* unit = units.begin(); !text.empty(); ++unit) {
    const auto number = takeNumber(text);
    const bool isLast = text.starts_with('.');
    const auto decimals = isLast ? takeDecimals(text) : Microseconds{0};
    if (!number.has_value() || !decimals.has_value() || text.empty()) {
      return std::nullopt;
    }
    unit = std::find_if(unit, units.end(), [&](const Unit& u) { return u.letter == text.front(); });
    text.remove_prefix(1);
    if (unit == units.end() || (isLast && !text.empty())) {
      return std::nullopt;
    }
    total += (*number * second + *decimals) * unit->seconds;
  }
  return total;
}

std::string twoDigits(Seconds number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

std::string withDecimals(double number, int decimals) {
  const double scale = std::pow(10, decimals);
  const double rounded = std::round(number * scale) / scale;
  return fixedNotation(rounded == 0 ? 0.0 : rounded, decimals);
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

std::optional<std::chrono::microseconds> parseDuration(std::string_view text) {
  const bool hasUnits = !text.empty() && (text.back() < '0' || text.back() > '9');
  const auto length = hasUnits ? parseUnits(text) : parseClock(text);
  if (!length.has_value() || *length <= 0 || *length > longest * second) {
    return std::nullopt;
  }
  return std::chrono::microseconds(*length);
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

std::string formatLength(double seconds) {
  if (seconds < minute) {
    return withDecimals(seconds, 1) + " s";
  }
  return formatDuration(std::chrono::seconds(static_cast<std::int64_t>(seconds)));
}

}  // namespace audrel::cli
