#pragma once

#include <functional>

namespace audrel::support {

/// Waits until `condition` holds; whether it did within twenty seconds.
bool waitFor(const std::function<bool()>& condition);

}  // namespace audrel::support
