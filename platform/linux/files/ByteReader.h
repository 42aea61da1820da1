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

/// The byte at `position`; 0 beyond the end.
inline std::uint64_t byteAt(std::span<const std::byte> bytes, std::size_t position) {
  return position < bytes.size() ? std::to_integer<std::uint64_t>(bytes[position]) : 0;
}

/// The number at `position`, the most significant byte first.
template <std::unsigned_integral Number>
Number bigAt(std::span<const std::byte> bytes, std::size_t position) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < sizeof(Number); ++i) {
    number = number << 8U | byteAt(bytes, position + i);
  }
  return static_cast<Number>(number);
}

/// The same, the least significant byte first.
template <std::unsigned_integral Number>
Number littleAt(std::span<const std::byte> bytes, std::size_t position) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < sizeof(Number); ++i) {
    number |= byteAt(bytes, position + i) << (8 * i);
  }
  return static_cast<Number>(number);
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
