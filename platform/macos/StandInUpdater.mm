#include "platform/Identity.h"
#include "platform/macos/Log.h"
#include "platform/macos/Updater.h"

namespace audrel::macos {
namespace {

class StandInController final : public SPU::StandardUpdaterController {
 public:
  void checkForUpdates() override {
    Log()
        .makeLogger(identity::bundleIdentifier, "platform")
        ->info("This build was made without an updater and cannot look for updates");
  }
};

}  // namespace

std::unique_ptr<SPU::StandardUpdaterController> UpdateFramework::makeStandardUpdaterController(
    bool /*startingUpdater*/) {
  return std::make_unique<StandInController>();
}

}  // namespace audrel::macos
