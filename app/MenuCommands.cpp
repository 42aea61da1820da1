#include <any>
#include <cstdlib>
#include <string>
#include <utility>

#include "app/AppDelegate.h"
#include "discovery/ProcessDiscovery.h"
#include "platform/CoreGraphics.h"
#include "platform/Identity.h"
#include "ui/MenuBuilder.h"

namespace audrel {
namespace {

constexpr const char* privacySettings =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture";

}  // namespace

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
