#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace audrel::linuxos {

/// What follows the first `count` bytes; empty when there are no more.
inline std::span<const std::byte> after(std::span<const std::byte> bytes, std::size_t count) {
  return bytes.subspan(std::min(count, bytes.size()));
}

/// The number at `position`, the most significant byte first; bytes beyond the end are 0.
template <std::unsigned_integral Number>
Number bigAt(std::span<const std::byte> bytes, std::size_t position) {
  Number number = 0;
  for (std::size_t i = 0; i < sizeof(Number); ++i) {
    const auto rest = after(bytes, position + i);
    const auto byte = rest.empty() ? std::byte{0} : rest.front();
    number = static_cast<Number>(std::uint64_t{number} << 8U | std::to_integer<Number>(byte));
  }
  return number;
}

/// The same, the least significant byte first.
template <std::unsigned_integral Number>
Number littleAt(std::span<const std::byte> bytes, std::size_t position) {
  Number number = 0;
  for (std::size_t i = 0; i < sizeof(Number); ++i) {
    const auto rest = after(bytes, position + i);
    const auto byte = rest.empty() ? std::byte{0} : rest.front();
    number = static_cast<Number>(number | std::to_integer<std::uint64_t>(byte) << (8 * i));
  }
  return number;
}

/// The four letters at `position`, or as many as there are.
inline std::string lettersAt(std::span<const std::byte> bytes, std::size_t position) {
  std::string letters;
  for (const std::byte byte : after(bytes, position)) {
    if (letters.size() == 4) {
      break;
    }
    letters += static_cast<char>(byte);
  }
  return letters;
}

}  // namespace audrel::linuxos
