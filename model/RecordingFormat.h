#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace audrel {

/// The container and codec of a recording. Its raw value is at once the file's extension and the
/// text under which the choice is stored.
class RecordingFormat {
 public:
  static const RecordingFormat m4a;
  static const RecordingFormat wav;

  /// Every format, M4A first.
  static constexpr std::array<RecordingFormat, 2> allCases();

  /// Matches exactly and case-sensitively; nothing for any other text.
  static std::optional<RecordingFormat> fromRawValue(std::string_view rawValue);

  /// "m4a" or "wav".
  constexpr std::string_view rawValue() const;

  /// The one text that stands for the value, which `decode` reads back.
  std::string encode() const;

  /// Throws `InvalidRecordingFormat` when `text` names no format.
  static RecordingFormat decode(std::string_view text);

  bool operator==(const RecordingFormat&) const = default;

 private:
  enum class Case : std::uint8_t { m4a, wav };

  constexpr explicit RecordingFormat(Case value) : value_(value) {}

  Case value_;
};

/// A text that was to be decoded as a format names none.
class InvalidRecordingFormat : public std::runtime_error {
 public:
  explicit InvalidRecordingFormat(std::string_view text);
};

inline constexpr RecordingFormat RecordingFormat::m4a{Case::m4a};
inline constexpr RecordingFormat RecordingFormat::wav{Case::wav};

constexpr std::array<RecordingFormat, 2> RecordingFormat::allCases() {
  return {m4a, wav};
}

constexpr std::string_view RecordingFormat::rawValue() const {
  switch (value_) {
    case Case::m4a:
      return "m4a";
    case Case::wav:
      return "wav";
  }
  return {};
}

}  // namespace audrel

/// A format hashes like the text of its raw value.
template <>
struct std::hash<audrel::RecordingFormat> {
  std::size_t operator()(const audrel::RecordingFormat& format) const noexcept {
    return std::hash<std::string_view>{}(format.rawValue());
  }
};
