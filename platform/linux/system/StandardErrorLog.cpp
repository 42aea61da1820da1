#include "platform/linux/system/StandardErrorLog.h"

#include <unistd.h>

#include <exception>
#include <utility>

#include "platform/Printable.h"
#include "platform/linux/system/Environment.h"

namespace audrel::linuxos {

class StandardErrorLog::CategoryLogger final : public os::Logger {
 public:
  CategoryLogger(std::shared_ptr<StandardErrorLog> log, std::string category)
      : log_(std::move(log)), category_(std::move(category)) {}

  void log(os::LogLevel level, std::string_view line) noexcept override {
    try {
      log_->log(category_, level, line);
    } catch (const std::exception&) {
      return;  // no memory for a log line is no reason to end a recording
    }
  }

 private:
  const std::shared_ptr<StandardErrorLog> log_;
  const std::string category_;
};

StandardErrorLog::StandardErrorLog(int descriptor, os::LogLevel minimum)
    : descriptor_(descriptor),
      minimum_(minimum),
      terminal_(isatty(descriptor) == 1 && environmentVariable("TERM") != "dumb") {}

StandardErrorLog::~StandardErrorLog() {
  try {
    tellRepetitions();
  } catch (const std::exception&) {
    return;  // as above
  }
}

std::shared_ptr<os::Logger> StandardErrorLog::makeLogger(const std::string& category) {
  return std::make_shared<CategoryLogger>(shared_from_this(), category);
}

void StandardErrorLog::leaveOut(std::set<std::string, std::less<>> categories) {
  const std::scoped_lock lock(mutex_);
  leftOut_ = std::move(categories);
}

void StandardErrorLog::log(const std::string& category, os::LogLevel level, std::string_view text) {
  if (level < minimum_) {
    return;
  }
  std::string line = "[" + category + "] " + (level == os::LogLevel::error ? "error: " : "info: ") +
                     printable(text);

  const std::scoped_lock lock(mutex_);
  if (leftOut_.contains(category)) {
    return;
  }
  if (line == last_) {
    ++repetitions_;
    return;
  }
  tellRepetitions();
  write(line);
  last_ = std::move(line);
}

void StandardErrorLog::tellRepetitions() {
  if (repetitions_ > 0) {
    write("(the last line came " + std::to_string(repetitions_) + " more times)");
    repetitions_ = 0;
  }
}

void StandardErrorLog::write(const std::string& line) const {
  const auto whole = (terminal_ ? "\r\x1b[K" : "") + line + "\n";
  // A log line that standard error does not take is lost: there is nowhere else to tell it.
  [[maybe_unused]] const auto written = ::write(descriptor_, whole.data(), whole.size());
}

}  // namespace audrel::linuxos
