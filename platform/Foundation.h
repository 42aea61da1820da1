#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Errors, dates, files, identifiers and comparison, as Foundation has them.
namespace NS {

/// `NSPOSIXErrorDomain`: the code is an `errno` value.
inline constexpr const char* POSIXErrorDomain = "NSPOSIXErrorDomain";

struct Error {
  std::string domain;
  std::int64_t code = 0;
  std::string localizedDescription;  ///< a sentence for the user

  bool operator==(const Error&) const = default;
};

using Date = std::chrono::system_clock::time_point;

class Clock {
 public:
  virtual ~Clock() = default;
  virtual Date now() = 0;
};

class FileManager {
 public:
  virtual ~FileManager() = default;

  /// The first URL of the Downloads directory in the user domain; nothing when there is none.
  virtual std::optional<std::filesystem::path> downloadsDirectory() = 0;
  virtual std::filesystem::path homeDirectoryForCurrentUser() = 0;

  /// Whether a file or folder is at `path`. Never throws.
  virtual bool fileExists(const std::filesystem::path& path) = 0;
};

class UUIDFactory {
 public:
  virtual ~UUIDFactory() = default;

  /// A new random UUID's text: upper-case hexadecimal with hyphens, 36 characters.
  virtual std::string uuidString() = 0;
};

enum class ComparisonResult : std::int64_t {
  orderedAscending = -1,
  orderedSame = 0,
  orderedDescending = 1,
};

class Collation {
 public:
  virtual ~Collation() = default;

  /// `localizedCaseInsensitiveCompare:` of two UTF-8 texts in the user's locale.
  virtual ComparisonResult localizedCaseInsensitiveCompare(std::string_view left,
                                                           std::string_view right) = 0;
};

}  // namespace NS
