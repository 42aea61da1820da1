#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "app/AppDelegate.h"

namespace audrel {

/// Shows what the controller's private fields keep and give up.
struct AppDelegateInspector {
  static RecordingEngine& engine(const AppDelegate& app) { return *app.engine_; }
  static const RecordingSource& selectedSource(const AppDelegate& app) {
    return app.selectedSource_;
  }
  static const std::vector<RecordingSource>& processSnapshot(const AppDelegate& app) {
    return app.processSnapshot_;
  }
  static const std::optional<std::filesystem::path>& currentOutputURL(const AppDelegate& app) {
    return app.currentOutputURL_;
  }
  static bool hasUITimer(const AppDelegate& app) { return app.uiTimer_ != nullptr; }
  static bool warningFired(const AppDelegate& app) { return app.warningFired_; }

  static void presentError(AppDelegate& app, const RecorderError& error) {
    app.presentError(error);
  }
};

}  // namespace audrel
