#pragma once

#include <functional>
#include <memory>
#include <set>
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

  /// From now on, of all loggers, where there is no journal.
  void keepOffStandardError(std::set<std::string, std::less<>> categories);

 private:
  /// Null where there is a journal.
  std::shared_ptr<StandardErrorLog> standardError_;
  os::Loggers loggers_;
};

}  // namespace audrel::linuxos
