#import <Sparkle/Sparkle.h>

#include "platform/macos/Updater.h"

namespace audrel::macos {
namespace {

class StandardUpdaterController final : public SPU::StandardUpdaterController {
 public:
  explicit StandardUpdaterController(SPUStandardUpdaterController* controller)
      : controller_(controller) {}

  void checkForUpdates() override {
    @autoreleasepool {
      [controller_ checkForUpdates:nil];
    }
  }

 private:
  SPUStandardUpdaterController* controller_;
};

}  // namespace

std::unique_ptr<SPU::StandardUpdaterController> UpdateFramework::makeStandardUpdaterController(
    bool startingUpdater) {
  @autoreleasepool {
    return std::make_unique<StandardUpdaterController>([[SPUStandardUpdaterController alloc]
        initWithStartingUpdater:startingUpdater
                updaterDelegate:nil
             userDriverDelegate:nil]);
  }
}

}  // namespace audrel::macos
