#include <chrono>

#include "app/AppDelegate.h"
#include "model/OutputURL.h"
#include "platform/CoreGraphics.h"

namespace audrel {
namespace {

constexpr double tickInterval = 1.0;
constexpr double secondsUntilWarning = 3600.0;

}  // namespace

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

}  // namespace audrel
