#include "app/AppDelegate.h"

#include <any>
#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

#include "discovery/ProcessDiscovery.h"
#include "model/OutputURL.h"
#include "platform/CoreGraphics.h"
#include "platform/Identity.h"
#include "ui/MenuBuilder.h"

namespace audrel {
namespace {

constexpr double tickInterval = 1.0;
constexpr double secondsUntilWarning = 3600.0;

constexpr const char* privacySettings =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture";

}  // namespace

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

// Recording

void AppDelegate::toggleRecording(const Sender& /*sender*/) {
  if (engine_->isRecording()) {
    stopRecording();
  } else {
    startRecording();
  }
}

void AppDelegate::startRecording() {
  CG::CaptureAccess& access = platform_.captureAccess;
  if (!access.preflightScreenCaptureAccess() && !access.requestScreenCaptureAccess()) {
    promptForPermission();
    return;
  }
  const RecordingFormat format = preferences_.format();
  const std::filesystem::path url =
      makeOutputURL(platform_.fileManager, selectedSource_, format, platform_.clock.now());
  try {
    engine_->start(selectedSource_, format, url);
  } catch (const RecorderError& error) {
    presentError(error);
    return;
  }
  currentOutputURL_ = url;
  // Now, not at the stop: whatever ends the recording, its file is known.
  preferences_.setLastRecordingURL(url);
  warningFired_ = false;
  startUITimer();
  updateStatusItem();
  rebuildMenu();
}

void AppDelegate::stopRecording() {
  engine_->stop();
  invalidateUITimer();
  updateStatusItem();
  rebuildMenu();
}

void AppDelegate::startUITimer() {
  invalidateUITimer();
  uiTimer_ = desktop_.runLoop.scheduleRepeatingTimer(tickInterval, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) {
      self->tick();
    }
  });
}

void AppDelegate::invalidateUITimer() {
  if (uiTimer_) {
    uiTimer_->invalidate();
    uiTimer_ = nullptr;
  }
}

void AppDelegate::tick() {
  // Before the flag is set: the warning shows one tick after it was given.
  updateStatusItem();
  if (!warningFired_ && elapsed() >= secondsUntilWarning) {
    warningFired_ = true;
    log_->info("Recording has passed 1 hour — soft warning displayed");
  }
}

void AppDelegate::updateStatusItem() {
  using State = StatusItemController::State;
  statusItem_.apply(engine_->isRecording() ? State::recording(elapsed(), warningFired_)
                                           : State::idle());
}

double AppDelegate::elapsed() {
  const auto startDate = engine_->startDate();
  if (!startDate) {
    return 0;
  }
  return std::chrono::duration<double>(platform_.clock.now() - *startDate).count();
}

void AppDelegate::promptForPermission() {
  const auto alert = desktop_.appKit.makeAlert();
  alert->setMessageText("Permission needed");
  alert->setInformativeText(
      "Audrel needs permission to record system audio.\n"
      "Grant \"Screen & System Audio Recording\" in System Settings to continue.");
  alert->setAlertStyle(NS::AlertStyle::warning);
  alert->addButton("Open System Settings");
  alert->addButton("Cancel");
  if (alert->runModal() == NS::alertFirstButtonReturn) {
    openPrivacySettings();
  }
}

void AppDelegate::presentError(const RecorderError& error) {
  const auto alert = desktop_.appKit.makeAlert();
  alert->setMessageText("Recording failed");
  alert->setInformativeText(error.errorDescription().value_or(""));
  alert->setAlertStyle(NS::AlertStyle::critical);
  alert->addButton("OK");
  alert->runModal();
}

// The menu and its commands

void AppDelegate::rebuildMenu() {
  const MenuBuilder::State state{
      .isRecording = engine_->isRecording(),
      .source = selectedSource_,
      .format = preferences_.format(),
      .processes = processSnapshot_,
      .elapsed = elapsed(),
      .lastRecordingAvailable = lastRecordingURL().has_value(),
  };
  auto menu = desktop_.appKit.makeMenu();
  menu->setAutoenablesItems(false);
  const auto populate =
      state.isRecording ? MenuBuilder::populateRecordingMenu : MenuBuilder::populateIdleMenu;
  populate(desktop_.appKit, *menu, state, weak_from_this());
  menu->setDelegate(weak_from_this());
  statusItem_.statusItem().setMenu(std::move(menu));
}

void AppDelegate::menuWillOpen(const std::shared_ptr<NS::Menu>& /*menu*/) {
  processSnapshot_ = ProcessDiscovery::audibleProcesses(platform_);
  rebuildMenu();
}

void AppDelegate::selectAllSystemAudio(const Sender& /*sender*/) {
  selectedSource_ = RecordingSource::allSystemAudio();
  preferences_.setLastSourceHint(std::nullopt);
  rebuildMenu();
}

void AppDelegate::selectProcess(const Sender& sender) {
  const auto* source =
      sender ? std::any_cast<RecordingSource>(&sender->representedObject()) : nullptr;
  if (source == nullptr) {
    return;
  }
  selectedSource_ = *source;
  if (const RecordingSource::Process* process = selectedSource_.asProcess()) {
    preferences_.setLastSourceHint(Preferences::SourceHint{process->bundleID, process->name});
  }
  rebuildMenu();
}

void AppDelegate::refreshProcessList(const Sender& /*sender*/) {
  processSnapshot_ = ProcessDiscovery::audibleProcesses(platform_);
  rebuildMenu();
}

void AppDelegate::selectFormatM4A(const Sender& /*sender*/) {
  selectFormat(RecordingFormat::m4a);
}

void AppDelegate::selectFormatWAV(const Sender& /*sender*/) {
  selectFormat(RecordingFormat::wav);
}

void AppDelegate::selectFormat(RecordingFormat format) {
  preferences_.setFormat(format);
  rebuildMenu();
}

std::optional<std::filesystem::path> AppDelegate::lastRecordingURL() const {
  return currentOutputURL_ ? currentOutputURL_ : preferences_.lastRecordingURL();
}

void AppDelegate::revealLastRecording(const Sender& /*sender*/) {
  if (const auto url = lastRecordingURL()) {
    desktop_.appKit.sharedWorkspace().activateFileViewerSelecting({*url});
  }
}

void AppDelegate::checkForUpdates(const Sender& /*sender*/) {
  updater_.updaterController().checkForUpdates();
}

void AppDelegate::showAbout(const Sender& /*sender*/) {
  const auto alert = desktop_.appKit.makeAlert();
  alert->setMessageText(std::string("Audrel ") + identity::version);
  const bool isGranted = platform_.captureAccess.preflightScreenCaptureAccess();
  alert->setInformativeText(
      std::string("Records your Mac's audio output — no microphone, no virtual drivers.\n"
                  "Built on Apple's Core Audio Tap API (macOS 14.2+).\n"
                  "\n"
                  "TCC permission: ") +
      (isGranted ? "granted" : "not granted"));
  alert->setAlertStyle(NS::AlertStyle::informational);
  alert->addButton("OK");
  alert->addButton("Open Privacy Settings");
  if (alert->runModal() == NS::alertSecondButtonReturn) {
    openPrivacySettings();
  }
}

void AppDelegate::openPrivacySettings() {
  const auto url = desktop_.urlParser.urlWithString(privacySettings);
  if (!url) {
    // The text is a constant: a platform that cannot parse it is broken.
    std::abort();
  }
  desktop_.appKit.sharedWorkspace().openURL(*url);
}

void AppDelegate::quit(const Sender& /*sender*/) {
  desktop_.appKit.sharedApplication().terminate();
}

}  // namespace audrel
