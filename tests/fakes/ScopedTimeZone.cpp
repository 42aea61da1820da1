#include "tests/fakes/ScopedTimeZone.h"

#include <cstdlib>
#include <ctime>

namespace audrel::fakes {

ScopedTimeZone::ScopedTimeZone(const char* zone) {
  if (const char* before = std::getenv("TZ")) {
    before_ = before;
  }
  setenv("TZ", zone, 1);
  tzset();
}

ScopedTimeZone::~ScopedTimeZone() {
  if (before_) {
    setenv("TZ", before_->c_str(), 1);
  } else {
    unsetenv("TZ");
  }
  tzset();
}

}  // namespace audrel::fakes
