#pragma once

#include "platform/Updater.h"

namespace audrel::macos {

/// Sparkle, where the build was given it; else a stand-in that says in the log that it finds no
/// updates.
class UpdateFramework final : public SPU::UpdateFramework {
 public:
  std::unique_ptr<SPU::StandardUpdaterController> makeStandardUpdaterController(
      bool startingUpdater) override;
};

}  // namespace audrel::macos
