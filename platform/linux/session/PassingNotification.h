#pragma once

#include <stop_token>

#include "platform/linux/loop/GLibHandles.h"
#include "platform/linux/system/Notice.h"

namespace audrel::linuxos {

/// Shows `notice` as a notification until it is asked to stop. For a thread of its own, while the
/// main thread waits and can show none: all that is sent goes past the main loop.
void showUntilStopped(const ConnectionHandle& connection, const Notice& notice,
                      const std::stop_token& stop);

}  // namespace audrel::linuxos
