#pragma once

#include <memory>
#include <string>
#include <string_view>

/// The system's log.
namespace os {

enum class LogLevel { info, error };

/// Logs under one subsystem and category. Thread-safe. Never called on the IO thread.
class Logger {
 public:
  virtual ~Logger() = default;

  /// `line` is the whole text, every argument rendered and public. Never throws.
  virtual void log(LogLevel level, std::string_view line) noexcept = 0;

  void info(std::string_view line) noexcept { log(LogLevel::info, line); }
  void error(std::string_view line) noexcept { log(LogLevel::error, line); }
};

class Log {
 public:
  virtual ~Log() = default;

  /// The logger of a subsystem and category: made when it is first asked for, the same from then
  /// on. Thread-safe.
  virtual std::shared_ptr<Logger> makeLogger(const std::string& subsystem,
                                             const std::string& category) = 0;
};

}  // namespace os
