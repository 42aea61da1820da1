#pragma once

#include "tests/fakes/ScopedVariable.h"

namespace audrel::fakes {

/// Sets the process's time zone for a scope. `zone` is a TZ value, such as
/// "CET-1CEST,M3.5.0,M10.5.0".
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) : variable_("TZ", zone) {}

 private:
  ScopedVariable variable_;
};

}  // namespace audrel::fakes
