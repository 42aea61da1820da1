#include "platform/linux/session/SoftwareUpdates.h"

#include <string>
#include <utility>

#include "platform/Identity.h"
#include "platform/linux/session/Launcher.h"

namespace audrel::linuxos {

namespace {

class Controller final : public SPU::StandardUpdaterController {
 public:
  explicit Controller(SoftwareUpdates::MakeAlert makeAlert) : makeAlert_(std::move(makeAlert)) {}

  void checkForUpdates() override {
    if (!openUri(std::string("appstream://") + identity::bundleIdentifier)) {
      return;
    }
    const auto alert = makeAlert_();
    alert->setMessageText("Audrel does not update itself");
    alert->setInformativeText(
        "If it came as a package, the package manager updates it together with everything else. If "
        "it was built from its sources, build newer ones.\n"
        "This desktop has no software center that could show Audrel's page.");
    alert->setAlertStyle(NS::AlertStyle::informational);
    alert->addButton("OK");
    alert->runModal();
  }

 private:
  SoftwareUpdates::MakeAlert makeAlert_;
};

}  // namespace

SoftwareUpdates::SoftwareUpdates(MakeAlert makeAlert) : makeAlert_(std::move(makeAlert)) {}

std::unique_ptr<SPU::StandardUpdaterController> SoftwareUpdates::makeStandardUpdaterController(
    bool /*startingUpdater*/) {
  return std::make_unique<Controller>(makeAlert_);
}

}  // namespace audrel::linuxos
