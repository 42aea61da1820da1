#pragma once

#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/Platform.h"

namespace audrel::cli {

/// `platform` with another audio framework and another log.
Platform withOwn(const Platform& platform, AV::AudioFramework& framework, os::Log& log);

/// Drops every line. For the portable code where the log comes out on standard error: each of its
/// errors is a complaint of the program there as well, which says more.
class SilentLog final : public os::Log {
 public:
  SilentLog();

  std::shared_ptr<os::Logger> makeLogger(const std::string& subsystem,
                                         const std::string& category) override;

 private:
  std::shared_ptr<os::Logger> logger_;
};

}  // namespace audrel::cli
