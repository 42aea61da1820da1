#pragma once

#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/Loggers.h"
#include "platform/linux/system/StandardErrorLog.h"

namespace audrel::linuxos {

/// The journal where this system runs one, else standard error. Loggers may outlive it.
class Log final : public os::Log {
 public:
  /// Lines below `standardErrorMinimum` are dropped where there is no journal: on a terminal they
  /// would stand among what the program has to say.
  explicit Log(os::LogLevel standardErrorMinimum);

  std::shared_ptr<os::Logger> makeLogger(const std::string& subsystem,
                                         const std::string& category) override;

  bool isOnStandardError() const { return standardError_ != nullptr; }

 private:
  /// Null where there is a journal.
  std::shared_ptr<StandardErrorLog> standardError_;
  os::Loggers loggers_;
};

}  // namespace audrel::linuxos
