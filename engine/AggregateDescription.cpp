#include "engine/AggregateDescription.h"

#include <vector>

#include "engine/TapDescription.h"

namespace audrel {

CA::Description aggregateDescription(const std::string& uid, const std::string& outputDeviceUID,
                                     const std::string& tapUID) {
  CA::Description tap;
  tap.entries = {
      {CA::kAudioSubTapUIDKey, tapUID},
      {CA::kAudioSubTapDriftCompensationKey, true},
  };
  CA::Description device;
  device.entries = {
      {CA::kAudioAggregateDeviceNameKey, std::string(tapName)},
      {CA::kAudioAggregateDeviceUIDKey, uid},
      {CA::kAudioAggregateDeviceMainSubDeviceKey, outputDeviceUID},
      {CA::kAudioAggregateDeviceIsPrivateKey, true},
      {CA::kAudioAggregateDeviceIsStackedKey, false},
      {CA::kAudioAggregateDeviceTapAutoStartKey, true},
      {CA::kAudioAggregateDeviceTapListKey, std::vector<CA::Description>{tap}},
  };
  return device;
}

}  // namespace audrel
