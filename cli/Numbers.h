#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Numbers and lengths of time, as people read and write them.
namespace audrel::cli {

/// `number` rounded to that many decimals, with a point whatever the locale, and zero without a
/// sign.
std::string withDecimals(double number, int decimals);

/// "999 B", "340 kB", "1.2 MB", "4.3 GB": powers of 1000.
std::string formatByteCount(std::uintmax_t bytes);

/// A length of time as people write it: seconds ("90"), minutes and seconds ("1:30"), hours,
/// minutes and seconds ("1:02:03"), or numbers with units, largest first ("1h2m", "90s", "1h30s").
/// Behind a colon two digits at most, below 60. The last number may have decimals, six at most
/// ("0.5", "1:30.25", "1.5h"). Nothing for any other text, for zero, and for more than a year.
std::optional<std::chrono::microseconds> parseDuration(std::string_view text);

/// "0:05", "12:34", "1:02:03"; negative lengths as zero.
std::string formatDuration(std::chrono::seconds duration);

/// The same of what may be short: "0.4 s", "59.9 s", "1:00".
std::string formatLength(double seconds);

}  // namespace audrel::cli
