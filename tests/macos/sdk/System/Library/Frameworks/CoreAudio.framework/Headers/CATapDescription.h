#pragma once

// Pages are below https://developer.apple.com/documentation/coreaudio/
#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

// catapmutebehavior
typedef CF_ENUM(NSInteger, CATapMuteBehavior) {
  CATapUnmuted = 0,
  CATapMuted = 1,
  CATapMutedWhenTapped = 2,
};

// catapdescription. `exclusive`, `private` and `UUID` are here for the tests that hold that the
// program leaves them alone.
API_AVAILABLE(macos(12.0))
@interface CATapDescription : NSObject
- (instancetype)initStereoMixdownOfProcesses:(NSArray<NSNumber*>*)processes;
- (instancetype)initStereoGlobalTapButExcludeProcesses:(NSArray<NSNumber*>*)processes;
@property(atomic, copy) NSString* name;
@property(atomic, copy) NSUUID* UUID;
@property(atomic, copy) NSArray<NSNumber*>* processes;
@property(atomic, getter=isMono) BOOL mono;
@property(atomic, getter=isExclusive) BOOL exclusive;
@property(atomic, getter=isMixdown) BOOL mixdown;
@property(atomic, getter=isPrivate, setter=setPrivate:) BOOL privateTap;
@property(atomic, getter=isMuted) CATapMuteBehavior muteBehavior;
@end

#pragma clang assume_nonnull end
