#include "cli/Console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <system_error>

namespace audrel::cli {

namespace {

/// 0, or the `errno` value of why not all of it was taken.
int writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const auto written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno != EINTR) {
      return errno;
    }
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    }
  }
  return 0;
}

std::optional<int> windowWidth(int descriptor) {
  winsize window{};
  const bool isKnown = ioctl(descriptor, TIOCGWINSZ, &window) == 0 && window.ws_col > 0;
  return isKnown ? std::optional<int>(window.ws_col) : std::nullopt;
}

bool canOverwrite() {
  const char* const terminal = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe)
  return terminal == nullptr || std::string_view(terminal) != "dumb";
}

std::string withLineFeed(std::string_view line) {
  return std::string(line).append("\n");
}

}  // namespace

Console::Console(int output, int errorOutput, Options::Progress progress)
    : output_(output),
      errorOutput_(errorOutput),
      progress_(progress),
      isTerminal_(progress == Options::Progress::shown && isatty(errorOutput) == 1),
      showsStatus_(isTerminal_ && canOverwrite()) {}

void Console::result(std::string_view line) {
  print(withLineFeed(line));
}

void Console::progress(std::string_view line) {
  if (progress_ == Options::Progress::shown) {
    clearStatus();
    writeAll(errorOutput_, withLineFeed(line));
  }
}

void Console::complain(std::string_view line) {
  clearStatus();
  writeAll(errorOutput_, "audrel-record: " + withLineFeed(line));
}

void Console::complainFurther(std::string_view lines) {
  clearStatus();
  writeAll(errorOutput_, lines);
}

void Console::print(std::string_view text) {
  clearStatus();
  if (const int code = writeAll(output_, text); code != 0) {
    hasLostResults_ = true;
    complain("Standard output did not take the result (" + std::generic_category().message(code) +
             "): send it elsewhere.");
  }
}

void Console::status(std::string_view line) {
  if (showsStatus_) {
    writeAll(errorOutput_, clearing().append(line));
    statusSize_ = std::max<std::size_t>(line.size(), 1);
  }
}

std::optional<int> Console::outputWidth() const {
  return windowWidth(output_);
}

std::optional<int> Console::errorWidth() const {
  return windowWidth(errorOutput_);
}

int Console::statusWidth() const {
  constexpr int usualWidth = 80;
  return errorWidth().value_or(usualWidth) - 1;
}

void Console::clearStatus() {
  if (statusSize_ > 0) {
    writeAll(errorOutput_, clearing());
    statusSize_ = 0;
  }
}

std::string Console::clearing() const {
  // A window that has become narrower shows the line as several, with the cursor in the last.
  const auto width = static_cast<std::size_t>(std::max(statusWidth(), 0)) + 1;
  const auto above = statusSize_ == 0 ? 0 : (statusSize_ - 1) / width;
  return above == 0 ? "\r\x1b[K" : "\r\x1b[" + std::to_string(above) + "A\x1b[J";
}

}  // namespace audrel::cli
