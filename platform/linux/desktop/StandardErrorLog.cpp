#include "platform/linux/desktop/StandardErrorLog.h"

#include <unistd.h>

#include <exception>
#include <utility>

namespace audrel::linuxos {

namespace {

/// UTF-8 as it is, save the control characters of ASCII and of Latin-1.
void appendVisibly(std::string& line, std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  constexpr unsigned char latin1Lead = 0xC2;
  unsigned char previous = 0;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    const bool control =
        byte < 0x20 || byte == 0x7F || (previous == latin1Lead && byte >= 0x80 && byte <= 0x9F);
    if (control) {
      line.append("\\x").append(1, digits[byte >> 4U]).append(1, digits[byte & 0xFU]);
    } else {
      line.append(1, character);
    }
    previous = byte;
  }
}

}  // namespace

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
    : descriptor_(descriptor), minimum_(minimum), terminal_(isatty(descriptor) == 1) {}

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

void StandardErrorLog::log(const std::string& category, os::LogLevel level, std::string_view text) {
  if (level < minimum_) {
    return;
  }
  std::string line = "[" + category + "] " + (level == os::LogLevel::error ? "error: " : "info: ");
  appendVisibly(line, text);

  const std::scoped_lock lock(mutex_);
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
