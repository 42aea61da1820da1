#pragma once

#include <functional>
#include <memory>

#include "platform/AppKit.h"
#include "platform/Updater.h"

namespace audrel::linuxos {

/// The program does not update itself: to check for updates opens its page in the software center.
/// A desktop without one gets an alert that says so, and where updates come from.
class SoftwareUpdates final : public SPU::UpdateFramework {
 public:
  using MakeAlert = std::function<std::unique_ptr<NS::Alert>()>;

  explicit SoftwareUpdates(MakeAlert makeAlert);

  /// There is nothing to start.
  std::unique_ptr<SPU::StandardUpdaterController> makeStandardUpdaterController(
      bool startingUpdater) override;

 private:
  MakeAlert makeAlert_;
};

}  // namespace audrel::linuxos
