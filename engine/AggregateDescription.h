#pragma once

#include <string>

#include "platform/CoreAudio.h"

namespace audrel {

/// A private device of the identifier `uid` around the tap of `tapUID`, with drift compensation.
/// The device of `outputDeviceUID` is its clock alone and no sub-device, so that nothing is
/// captured but the tap.
CA::Description aggregateDescription(const std::string& uid, const std::string& outputDeviceUID,
                                     const std::string& tapUID);

}  // namespace audrel
