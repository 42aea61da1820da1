#pragma once

#include <cstdint>
#include <string>

namespace audrel::cli {

/// `number` rounded to that many decimals, with a point whatever the locale, and zero without a
/// sign.
std::string withDecimals(double number, int decimals);

/// "999 B", "340 kB", "1.2 MB", "4.3 GB": powers of 1000.
std::string formatByteCount(std::uintmax_t bytes);

}  // namespace audrel::cli
