#include "platform/linux/system/JournalLogger.h"

#define SD_JOURNAL_SUPPRESS_LOCATION
#include <sys/uio.h>
#include <systemd/sd-journal.h>

#include <array>
#include <cerrno>
#include <exception>

namespace audrel::linuxos {

namespace {

iovec field(const std::string& text) {
  return {.iov_base = const_cast<char*>(text.data()), .iov_len = text.size()};
}

}  // namespace

void sendToJournal(std::span<const iovec> fields) {
  sd_journal_sendv(fields.data(), static_cast<int>(fields.size()));
}

JournalLogger::JournalLogger(const std::string& subsystem, const std::string& category,
                             JournalSend send)
    : subsystem_("SUBSYSTEM=" + subsystem),
      category_("CATEGORY=" + category),
      identifier_(std::string("SYSLOG_IDENTIFIER=") + program_invocation_short_name),
      send_(send) {}

void JournalLogger::log(os::LogLevel level, std::string_view line) noexcept {
  try {
    const auto message = std::string("MESSAGE=").append(line);
    const std::string priority = level == os::LogLevel::error ? "PRIORITY=3" : "PRIORITY=6";
    const std::array fields = {field(message), field(priority), field(subsystem_), field(category_),
                               field(identifier_)};
    send_(fields);
  } catch (const std::exception&) {
    return;  // no memory for a log line is no reason to end a recording
  }
}

}  // namespace audrel::linuxos
