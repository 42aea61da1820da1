#pragma once

#include <memory>

#include "platform/Updater.h"

namespace audrel {

/// Owns the update framework's controller for the life of the program. Main thread only.
class UpdaterController {
 public:
  /// Starts the updater, without delegates.
  explicit UpdaterController(SPU::UpdateFramework& framework);

  SPU::StandardUpdaterController& updaterController() { return *updaterController_; }

 private:
  std::unique_ptr<SPU::StandardUpdaterController> updaterController_;
};

}  // namespace audrel
