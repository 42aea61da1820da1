#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
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

  /// The time of day.
  virtual Date now() = 0;
};

/// Folders are absolute paths.
class FileManager {
 public:
  virtual ~FileManager() = default;

  /// The first URL of the Downloads directory in the user domain; nothing when there is none.
  virtual std::optional<std::filesystem::path> downloadsDirectory() = 0;
  virtual std::filesystem::path homeDirectoryForCurrentUser() = 0;

  /// Whether a file or folder is at `path`, or where the links at it lead. Never throws.
  virtual bool fileExists(const std::filesystem::path& path) = 0;

  /// Whether nothing new can be made at `path`, for what is there. What exists takes its name;
  /// whether a link that leads nowhere does too is the platform's to say. Never throws.
  virtual bool nameIsTaken(const std::filesystem::path& path) = 0;
};

class UUIDFactory {
 public:
  virtual ~UUIDFactory() = default;

  /// A new random UUID's text: upper-case hexadecimal with hyphens, 36 characters. Never the same
  /// twice.
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

  /// `localizedCaseInsensitiveCompare:` of two UTF-8 texts in the user's locale. Texts can be
  /// sorted by it; those that differ in case alone are the same.
  virtual ComparisonResult localizedCaseInsensitiveCompare(std::string_view left,
                                                           std::string_view right) = 0;
};

/// A text that was parsed as a URL.
struct URL {
  std::string absoluteString;

  bool operator==(const URL&) const = default;
};

class URLParser {
 public:
  virtual ~URLParser() = default;

  /// `NSURL`'s `URLWithString:`; nothing when `text` is no URL. A text without a character that has
  /// to be escaped stays as it is.
  virtual std::optional<URL> urlWithString(const std::string& text) = 0;
};

/// The standard user defaults of the application. Nothing is registered in advance. What is set
/// lasts until it is removed, beyond the object and the program.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  /// Nothing when there is no text under `key`.
  virtual std::optional<std::string> stringForKey(const std::string& key) = 0;
  virtual void setString(const std::string& value, const std::string& key) = 0;
  virtual void removeObjectForKey(const std::string& key) = 0;
};

class Timer {
 public:
  virtual ~Timer() = default;

  /// The timer fires no more. May be called in the timer's own block, which is not destroyed before
  /// it returns.
  virtual void invalidate() = 0;
};

class RunLoop {
 public:
  virtual ~RunLoop() = default;

  /// Schedules a repeating timer on the main run loop, which holds it until it is invalidated.
  /// `interval` in seconds. Main thread. It fires whenever the loop waits for events; whether it
  /// does so while an alert is up too is the platform's to say.
  virtual std::shared_ptr<Timer> scheduleRepeatingTimer(double interval,
                                                        std::function<void()> block) = 0;
};

}  // namespace NS
