#pragma once

// The part of the update framework's interface that the program uses, after its documentation:
// https://sparkle-project.org/documentation/api-reference/Classes/SPUStandardUpdaterController.html
#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

@protocol SPUUpdaterDelegate
, SPUStandardUserDriverDelegate;

@interface SPUStandardUpdaterController : NSObject
- (instancetype)init __attribute__((unavailable));
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(nullable id<SPUUpdaterDelegate>)updaterDelegate
                     userDriverDelegate:
                         (nullable id<SPUStandardUserDriverDelegate>)userDriverDelegate;
- (void)checkForUpdates:(nullable id)sender;
@end

#pragma clang assume_nonnull end
