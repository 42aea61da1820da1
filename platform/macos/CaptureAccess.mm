#include "platform/macos/CaptureAccess.h"

#import <CoreGraphics/CoreGraphics.h>

namespace audrel::macos {

bool CaptureAccess::preflightScreenCaptureAccess() {
  @autoreleasepool {
    return CGPreflightScreenCaptureAccess();
  }
}

bool CaptureAccess::requestScreenCaptureAccess() {
  @autoreleasepool {
    return CGRequestScreenCaptureAccess();
  }
}

}  // namespace audrel::macos
