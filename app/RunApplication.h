#pragma once

#include "platform/Desktop.h"
#include "platform/Platform.h"

namespace audrel {

/// The menu-bar program, from its first call to its last: a process entry makes the interfaces and
/// calls this on the main thread. The process's exit status, when the event loop ends.
int runApplication(const Platform& platform, const Desktop& desktop);

}  // namespace audrel
