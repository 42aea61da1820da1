#pragma once

#include <functional>
#include <memory>

#include "platform/AppKit.h"
#include "platform/Updater.h"

namespace audrel::linuxos {

/// Updates come with the system's packages: to check for them opens the program's page in the
/// software center. A desktop without one gets an alert that says so.
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
