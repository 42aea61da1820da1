#pragma once

#include <cstddef>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace audrel::macho {

/// Bytes of which nothing is read outside.
class Bytes {
 public:
  Bytes() = default;
  explicit Bytes(std::span<const std::byte> bytes) : bytes_(bytes) {}

  /// Throws std::runtime_error.
  template <typename T>
  T at(std::size_t offset) const {
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, part(offset, sizeof(T)).bytes_.data(), sizeof(T));
    return value;
  }

  /// Throws std::runtime_error.
  Bytes part(std::size_t offset, std::size_t size) const {
    if (offset > bytes_.size() || size > bytes_.size() - offset) {
      throw std::runtime_error("the file ends too early");
    }
    return Bytes(bytes_.subspan(offset, size));
  }

  /// Up to a zero or the end.
  std::string text(std::size_t offset) const {
    const auto* begin = reinterpret_cast<const char*>(part(offset, 0).bytes_.data());
    return std::string(begin, strnlen(begin, bytes_.size() - offset));
  }

  std::span<const std::byte> span() const { return bytes_; }

 private:
  std::span<const std::byte> bytes_;
};

}  // namespace audrel::macho
