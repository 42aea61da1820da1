#pragma once

#include <optional>
#include <string>

namespace audrel::fakes {

/// Sets the process's time zone for a scope. `zone` is a TZ value, such as
/// "CET-1CEST,M3.5.0,M10.5.0".
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone);
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;
  ~ScopedTimeZone();

 private:
  std::optional<std::string> before_;
};

}  // namespace audrel::fakes
