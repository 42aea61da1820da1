#pragma once

#include <memory>

/// The update framework.
namespace SPU {

class StandardUpdaterController {
 public:
  virtual ~StandardUpdaterController() = default;

  /// `checkForUpdates:` with no sender: the user asked.
  virtual void checkForUpdates() = 0;
};

class UpdateFramework {
 public:
  virtual ~UpdateFramework() = default;

  /// `initWithStartingUpdater:updaterDelegate:userDriverDelegate:`, without delegates.
  virtual std::unique_ptr<StandardUpdaterController> makeStandardUpdaterController(
      bool startingUpdater) = 0;
};

}  // namespace SPU
