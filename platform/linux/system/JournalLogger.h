#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/Log.h"

struct iovec;

namespace audrel::linuxos {

/// Takes the fields of one entry, each "NAME=value". Never throws.
using JournalSend = void (*)(std::span<const iovec> fields);

/// Sends to this system's journal; an entry that it does not take is lost.
void sendToJournal(std::span<const iovec> fields);

/// One entry a line, with the fields MESSAGE, PRIORITY (6 or 3, as syslog has them), SUBSYSTEM,
/// CATEGORY and SYSLOG_IDENTIFIER (the program's file name).
class JournalLogger final : public os::Logger {
 public:
  JournalLogger(const std::string& subsystem, const std::string& category, JournalSend send);

  void log(os::LogLevel level, std::string_view line) noexcept override;

 private:
  const std::string subsystem_;
  const std::string category_;
  const std::string identifier_;
  const JournalSend send_;
};

}  // namespace audrel::linuxos
