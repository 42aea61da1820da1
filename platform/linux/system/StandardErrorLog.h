#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "platform/Log.h"

namespace audrel::linuxos {

/// Lines of "[category] level: text" on a file descriptor, each written in one piece and printable,
/// since the text holds names that other programs chose. On a terminal that can do so (TERM is not
/// "dumb") a line first clears the one that the cursor stands in, which may be a status line.
///
/// A line that repeats the one before is only counted, and the count told before the next other
/// line: a full disk must not flood the terminal. Thread-safe.
class StandardErrorLog : public std::enable_shared_from_this<StandardErrorLog> {
 public:
  StandardErrorLog(int descriptor, os::LogLevel minimum);
  StandardErrorLog(const StandardErrorLog&) = delete;
  StandardErrorLog& operator=(const StandardErrorLog&) = delete;
  ~StandardErrorLog();

  /// The logger keeps the log alive.
  std::shared_ptr<os::Logger> makeLogger(const std::string& category);

  /// Drops all lines of these categories from now on.
  void leaveOut(std::set<std::string, std::less<>> categories);

 private:
  class CategoryLogger;

  void log(const std::string& category, os::LogLevel level, std::string_view text);
  void tellRepetitions();
  void write(const std::string& line) const;

  const int descriptor_;
  const os::LogLevel minimum_;
  const bool terminal_;
  std::mutex mutex_;
  std::set<std::string, std::less<>> leftOut_;
  std::string last_;
  std::uint64_t repetitions_ = 0;
};

}  // namespace audrel::linuxos
