#pragma once

// Pages are below https://developer.apple.com/documentation/coregraphics/
#include <CoreFoundation/CoreFoundation.h>

// cgpreflightscreencaptureaccess()
CF_EXPORT bool CGPreflightScreenCaptureAccess(void) API_AVAILABLE(macos(10.15));

// cgrequestscreencaptureaccess()
CF_EXPORT bool CGRequestScreenCaptureAccess(void) API_AVAILABLE(macos(10.15));
