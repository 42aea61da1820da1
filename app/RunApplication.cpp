#include "app/RunApplication.h"

#include "app/AppDelegate.h"
#include "platform/AppKit.h"

namespace audrel {

int runApplication(const Platform& platform, const Desktop& desktop) {
  NS::Application& application = desktop.appKit.sharedApplication();
  application.setActivationPolicy(NS::ActivationPolicy::accessory);
  // The application refers to its delegate weakly: this is what keeps it.
  const auto delegate = AppDelegate::make(platform, desktop);
  application.setDelegate(delegate);
  application.run();
  return 0;
}

}  // namespace audrel
