#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "platform/Foundation.h"
#include "platform/NativePlatform.h"

namespace audrel::macos {

/// The system's own cannot be asked for an hour.
class SteppedClock final : public NS::Clock {
 public:
  NS::Date now() override { return date; }

  NS::Date date = std::chrono::sys_days(std::chrono::year(2026) / 1 / 31);
};

/// The platform of macOS, but for the clock.
class SteppedPlatform {
 public:
  explicit SteppedPlatform(SteppedClock& clock) : clock_(clock) {}

  Platform interfaces() {
    const Platform native = native_->interfaces();
    return {.audioHardware = native.audioHardware,
            .audioFramework = native.audioFramework,
            .captureAccess = native.captureAccess,
            .clock = clock_,
            .collation = native.collation,
            .fileManager = native.fileManager,
            .runningApplications = native.runningApplications,
            .uuids = native.uuids,
            .dispatch = native.dispatch,
            .log = native.log,
            .diagnostics = native.diagnostics};
  }

  std::optional<Desktop> desktop() { return native_->desktop(); }

 private:
  SteppedClock& clock_;
  const std::unique_ptr<NativePlatform> native_ = NativePlatform::make();
};

}  // namespace audrel::macos
