#include "cli/OwnPlatform.h"

namespace audrel::cli {

namespace {

class SilentLogger final : public os::Logger {
 public:
  void log(os::LogLevel /*level*/, std::string_view /*line*/) noexcept override {}
};

}  // namespace

Platform withOwn(const Platform& platform, AV::AudioFramework& framework, os::Log& log) {
  return {.audioHardware = platform.audioHardware,
          .audioFramework = framework,
          .captureAccess = platform.captureAccess,
          .clock = platform.clock,
          .collation = platform.collation,
          .fileManager = platform.fileManager,
          .runningApplications = platform.runningApplications,
          .uuids = platform.uuids,
          .dispatch = platform.dispatch,
          .log = log,
          .diagnostics = platform.diagnostics};
}

SilentLog::SilentLog() : logger_(std::make_shared<SilentLogger>()) {}

std::shared_ptr<os::Logger> SilentLog::makeLogger(const std::string& /*subsystem*/,
                                                  const std::string& /*category*/) {
  return logger_;
}

}  // namespace audrel::cli
