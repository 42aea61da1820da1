#include "platform/linux/system/Log.h"

#include <unistd.h>

#include <utility>

#include "platform/linux/system/JournalLogger.h"

namespace audrel::linuxos {

namespace {

/// Where the journal listens. The library itself drops lines silently when nobody does.
constexpr const char* journalSocket = "/run/systemd/journal/socket";

}  // namespace

Log::Log(os::LogLevel standardErrorMinimum)
    : standardError_(access(journalSocket, W_OK) == 0 ? nullptr
                                                      : std::make_shared<StandardErrorLog>(
                                                            STDERR_FILENO, standardErrorMinimum)) {}

std::shared_ptr<os::Logger> Log::makeLogger(const std::string& subsystem,
                                            const std::string& category) {
  return loggers_.loggerFor(subsystem, category, [&]() -> std::shared_ptr<os::Logger> {
    if (standardError_ != nullptr) {
      return standardError_->makeLogger(category);
    }
    return std::make_shared<JournalLogger>(subsystem, category, sendToJournal);
  });
}

void Log::keepOffStandardError(std::set<std::string, std::less<>> categories) {
  if (standardError_ != nullptr) {
    standardError_->leaveOut(std::move(categories));
  }
}

}  // namespace audrel::linuxos
