#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace audrel::cli {

/// A length of time as people write it: seconds ("90"), minutes and seconds ("1:30"), hours,
/// minutes and seconds ("1:02:03"), or numbers with units, largest first ("1h2m", "90s", "1h30s").
/// Behind a colon two digits at most, below 60. The last number may have decimals, six at most
/// ("0.5", "1:30.25", "1.5h"). Nothing for any other text, for zero, and for more than a year.
std::optional<std::chrono::microseconds> parseDuration(std::string_view text);

/// "0:05", "12:34", "1:02:03"; negative lengths as zero.
std::string formatDuration(std::chrono::seconds duration);

}  // namespace audrel::cli
