#include "cli/OwnPlatform.h"

namespace audrel::cli {

Platform withOwn(const Platform& platform, AV::AudioFramework& framework) {
  return {.audioHardware = platform.audioHardware,
          .audioFramework = framework,
          .captureAccess = platform.captureAccess,
          .clock = platform.clock,
          .collation = platform.collation,
          .fileManager = platform.fileManager,
          .runningApplications = platform.runningApplications,
          .uuids = platform.uuids,
          .dispatch = platform.dispatch,
          .log = platform.log,
          .diagnostics = platform.diagnostics};
}

}  // namespace audrel::cli
