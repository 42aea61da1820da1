#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Log.h"

namespace audrel::support {

/// Keeps what is logged. Any thread.
class KeptLogger final : public os::Logger {
 public:
  void log(os::LogLevel level, std::string_view line) noexcept override {
    const std::scoped_lock lock(mutex_);
    lines_.push_back((level == os::LogLevel::error ? "error: " : "") + std::string(line));
  }

  /// Errors begin with "error: ".
  std::vector<std::string> lines() const {
    const std::scoped_lock lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

/// Has one logger, whoever asks.
class KeptLog final : public os::Log {
 public:
  std::shared_ptr<os::Logger> makeLogger(const std::string& /*subsystem*/,
                                         const std::string& askedCategory) override {
    category = askedCategory;
    return logger_;
  }

  std::vector<std::string> lines() const { return logger_->lines(); }

  std::string category;  ///< that was asked for last

 private:
  std::shared_ptr<KeptLogger> logger_ = std::make_shared<KeptLogger>();
};

}  // namespace audrel::support
