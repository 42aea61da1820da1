#include "engine/UnderrunCounter.h"

#include <cstdlib>
#include <limits>

namespace audrel {

void UnderrunCounter::increment() noexcept {
  const std::int64_t before = value_.fetch_add(1, std::memory_order_relaxed);
  if (before == std::numeric_limits<std::int64_t>::max()) {
    std::abort();
  }
}

}  // namespace audrel
