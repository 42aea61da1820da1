#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace audrel::linuxos {

/// Writes the bytes of file headers into memory.
class ByteWriter {
 public:
  template <std::unsigned_integral Number>
  void big(Number number) {
    std::array<std::byte, sizeof(Number)> bytes;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
      bytes[sizeof(Number) - 1 - i] = static_cast<std::byte>(number >> (8 * i));
    }
    add(bytes);
  }

  template <std::unsigned_integral Number>
  void little(Number number) {
    std::array<std::byte, sizeof(Number)> bytes;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
      bytes[i] = static_cast<std::byte>(number >> (8 * i));
    }
    add(bytes);
  }

  void zeros(std::size_t count) { bytes_.resize(bytes_.size() + count); }
  void text(std::string_view text) { add(std::as_bytes(std::span(text))); }
  void add(std::span<const std::byte> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  }

  /// Changes what was written at `position`.
  void patchBig32(std::size_t position, std::uint32_t number) {
    for (std::size_t i = 0; i < sizeof number; ++i) {
      bytes_[position + i] = static_cast<std::byte>(number >> (8 * (sizeof number - 1 - i)));
    }
  }

  void reserve(std::size_t size) { bytes_.reserve(size); }
  void clear() { bytes_.clear(); }
  std::size_t size() const { return bytes_.size(); }
  std::span<const std::byte> bytes() const { return bytes_; }

 private:
  std::vector<std::byte> bytes_;
};

}  // namespace audrel::linuxos
