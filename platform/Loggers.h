#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/Log.h"

namespace os {

/// What a log keeps its loggers in: one for a subsystem and category. Thread-safe.
class Loggers {
 public:
  using Make = std::function<std::shared_ptr<Logger>()>;

  /// `make` is asked for the first of a subsystem and category, while others who ask wait.
  std::shared_ptr<Logger> loggerFor(const std::string& subsystem, const std::string& category,
                                    const Make& make) {
    const std::scoped_lock lock(mutex_);
    auto& logger = loggers_[{subsystem, category}];
    if (logger == nullptr) {
      logger = make();
    }
    return logger;
  }

 private:
  std::mutex mutex_;
  std::map<std::pair<std::string, std::string>, std::shared_ptr<Logger>> loggers_;
};

}  // namespace os
