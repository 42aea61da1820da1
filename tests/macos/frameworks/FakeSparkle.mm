#import <Sparkle/Sparkle.h>

#include "tests/macos/frameworks/FakeMac.h"

using audrel::fakemac::mac;

@implementation SPUStandardUpdaterController

- (instancetype)init {
  return self;
}

- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id<SPUUpdaterDelegate>)updaterDelegate
                     userDriverDelegate:(id<SPUStandardUserDriverDelegate>)userDriverDelegate {
  mac().note(
      std::string("SPUStandardUpdaterController(startingUpdater ") +
      (startUpdater ? "true" : "false") +
      (updaterDelegate == nil && userDriverDelegate == nil ? ", no delegates)" : ", delegates)"));
  return self;
}

- (void)checkForUpdates:(id)sender {
  mac().note(std::string("SPUStandardUpdaterController.checkForUpdates:") +
             (sender == nil ? " without sender" : " with sender"));
}

@end
