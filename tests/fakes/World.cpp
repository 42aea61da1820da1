#include "tests/fakes/World.h"

namespace audrel::fakes {

Platform World::platform() {
  return {hardware, audio, captureAccess, clock, collation, fileManager, runningApplications, uuids,
          dispatch, log,   diagnostics};
}

}  // namespace audrel::fakes
