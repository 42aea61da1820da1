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
    alert->setMessageText("Updates come with your system");
    alert->setInformativeText(
        "This desktop has no software center that could show Audrel's page. The package manager "
        "updates Audrel together with everything else.");
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
