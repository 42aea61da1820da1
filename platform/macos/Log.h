#pragma once

#include "platform/Log.h"
#include "platform/Loggers.h"

namespace audrel::macos {

/// The unified log. Every line is one public text, so that nobody reads "<private>".
class Log final : public os::Log {
 public:
  std::shared_ptr<os::Logger> makeLogger(const std::string& subsystem,
                                         const std::string& category) override;

 private:
  os::Loggers loggers_;
};

}  // namespace audrel::macos
