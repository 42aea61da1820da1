#include "tests/fakes/Journal.h"

#include <locale>
#include <sstream>
#include <utility>

namespace audrel::fakes {

void Journal::add(std::string line) {
  if (whenAdded) {
    whenAdded(line);
  }
  const std::lock_guard lock(mutex_);
  lines_.push_back(std::move(line));
}

std::vector<std::string> Journal::lines() const {
  const std::lock_guard lock(mutex_);
  return lines_;
}

std::vector<std::string> Journal::lines(std::string_view prefix) const {
  std::vector<std::string> matching = lines();
  std::erase_if(matching, [prefix](const std::string& line) { return !line.starts_with(prefix); });
  return matching;
}

std::string Journal::text() const {
  std::string text;
  for (const std::string& line : lines()) {
    text += line + "\n";
  }
  return text;
}

void Journal::clear() {
  const std::lock_guard lock(mutex_);
  lines_.clear();
}

std::string inQuotes(std::string_view text) {
  return '"' + std::string(text) + '"';
}

std::string shortNumber(double number) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream.precision(15);
  stream << number;
  return stream.str();
}

}  // namespace audrel::fakes
