#include "platform/macos/Log.h"

#import <os/log.h>

#include <exception>

#include "platform/Identity.h"
#include "platform/macos/ProgramCall.h"

namespace audrel::macos {
namespace {

class Logger final : public os::Logger {
 public:
  explicit Logger(os_log_t log) : log_(log) {}

  void log(os::LogLevel level, std::string_view line) noexcept override {
    const os_log_type_t type = level == os::LogLevel::error ? OS_LOG_TYPE_ERROR : OS_LOG_TYPE_INFO;
    try {
      const std::string terminated(line);
      os_log_with_type(log_, type, "%{public}s", terminated.c_str());
    } catch (const std::exception&) {
      os_log_with_type(log_, OS_LOG_TYPE_ERROR, "%{public}s", "No memory for a line of the log");
    }
  }

 private:
  os_log_t log_;
};

}  // namespace

std::shared_ptr<os::Logger> Log::makeLogger(const std::string& subsystem,
                                            const std::string& category) {
  return loggers_.loggerFor(subsystem, category, [&] {
    return std::make_shared<Logger>(os_log_create(subsystem.c_str(), category.c_str()));
  });
}

void logFailedCall(const char* call, const char* reason) noexcept {
  static const os_log_t log = os_log_create(identity::bundleIdentifier, "platform");
  os_log_with_type(log, OS_LOG_TYPE_ERROR, "%{public}s failed: %{public}s", call, reason);
}

void logFailedCall(const char* call, NSException* exception) noexcept {
  @autoreleasepool {
    const char* reason = exception.reason.UTF8String;
    logFailedCall(call, reason == nullptr ? "exception without a reason" : reason);
  }
}

}  // namespace audrel::macos
