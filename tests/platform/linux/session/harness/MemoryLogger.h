#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/Log.h"

namespace audrel::sessiontest {

/// Keeps its lines, with "error: " before those that are errors. One thread.
class MemoryLogger final : public os::Logger {
 public:
  std::vector<std::string> lines;

  void log(os::LogLevel level, std::string_view line) noexcept override;
};

}  // namespace audrel::sessiontest
