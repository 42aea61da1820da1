#pragma once

// Pages are below https://developer.apple.com/documentation/coreaudio/
#include <CoreAudio/AudioHardware.h>

@class CATapDescription;

// Without statements on null, as in the system's header.

// audiohardwarecreateprocesstap(_:_:)
CF_EXPORT OSStatus AudioHardwareCreateProcessTap(CATapDescription* inDescription,
                                                 AudioObjectID* outTapID)
    API_AVAILABLE(macos(14.2));

// audiohardwaredestroyprocesstap(_:)
CF_EXPORT OSStatus AudioHardwareDestroyProcessTap(AudioObjectID inTapID) API_AVAILABLE(macos(14.2));
