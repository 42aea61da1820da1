#include "app/AppDelegate.h"

#include <utility>

#include "platform/CoreGraphics.h"
#include "platform/Identity.h"

namespace audrel {

std::shared_ptr<AppDelegate> AppDelegate::make(const Platform& platform, const Desktop& desktop) {
  return std::make_shared<AppDelegate>(OnlyMake{}, platform, desktop);
}

AppDelegate::AppDelegate(OnlyMake, const Platform& platform, const Desktop& desktop)
    : platform_(platform),
      desktop_(desktop),
      log_(platform.log.makeLogger(identity::bundleIdentifier, "app")),
      preferences_(desktop.userDefaults, platform.fileManager),
      engine_(RecordingEngine::make(platform)),
      statusItem_(desktop.appKit),
      updater_(desktop.updateFramework) {}

void AppDelegate::applicationDidFinishLaunching() {
  desktop_.appKit.sharedApplication().setActivationPolicy(NS::ActivationPolicy::accessory);
  preferences_.format();
  platform_.captureAccess.requestScreenCaptureAccess();

  auto menu = desktop_.appKit.makeMenu();
  menu->setAutoenablesItems(false);
  menu->setDelegate(weak_from_this());
  statusItem_.statusItem().setMenu(std::move(menu));
  rebuildMenu();
}

void AppDelegate::applicationWillTerminate() {
  if (!engine_->isRecording()) {
    return;
  }
  log_->info("Terminating — stopping in-flight recording");
  // Without the timer, the status item and the menu: they end with the process.
  engine_->stop();
}

}  // namespace audrel
