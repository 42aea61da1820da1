#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

/// What the program asks of AppKit.
namespace NS {

struct RunningApplication {
  std::optional<std::string> localizedName;

  bool operator==(const RunningApplication&) const = default;
};

class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  /// `NSRunningApplication(processIdentifier:)`; nothing when no application has that pid.
  virtual std::optional<RunningApplication> runningApplication(pid_t processIdentifier) = 0;
};

}  // namespace NS
