#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace audrel::fakes {

/// Everything that happened in a `World`, one line an event: each call with its arguments and its
/// result, each log line, each write. Any thread.
class Journal {
 public:
  void add(std::string line);

  /// Called with each line as it is added, on the thread that adds it. Set it while nothing runs.
  std::function<void(const std::string&)> whenAdded;

  std::vector<std::string> lines() const;

  /// The lines that begin with `prefix`, for tests about one kind of event.
  std::vector<std::string> lines(std::string_view prefix) const;

  /// All lines, each ended by a line feed.
  std::string text() const;

  /// Forgets what happened so far.
  void clear();

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

/// `text` in double quotes.
std::string inQuotes(std::string_view text);

/// `number` as printf's "%.15g" would have it in the C locale.
std::string shortNumber(double number);

}  // namespace audrel::fakes
