#include "tests/fakes/World.h"

namespace audrel::fakes {

Platform World::platform() {
  return platformWith(dispatch);
}

Platform World::platformWith(dispatch::Dispatch& queues) {
  return {hardware, audio,  captureAccess, clock,      collation, fileManager, runningApplications,
          uuids,    queues, log,           diagnostics};
}

}  // namespace audrel::fakes
