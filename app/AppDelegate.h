#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "app/UpdaterController.h"
#include "engine/RecordingEngine.h"
#include "model/Preferences.h"
#include "model/RecorderError.h"
#include "model/RecordingSource.h"
#include "platform/AppKit.h"
#include "platform/Desktop.h"
#include "platform/Foundation.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "ui/MenuActions.h"
#include "ui/StatusItemController.h"

namespace audrel {

/// The program's controller: owns everything, starts and stops recordings, runs the one-second UI
/// timer, and answers the menu's commands, the launch and the termination. Main thread only.
///
/// Menu items, menus, the application and the UI timer refer to it weakly, so whoever made it keeps
/// it for the whole run. A recording that still runs when it goes is not stopped: termination does
/// that.
class AppDelegate final : public NS::ApplicationDelegate,
                          public NS::MenuDelegate,
                          public MenuActions,
                          public std::enable_shared_from_this<AppDelegate> {
  struct OnlyMake {
    explicit OnlyMake() = default;
  };

 public:
  /// Creates the engine, the status item and the updater, which starts at once. It refers to its
  /// part of `platform` and `desktop` for life.
  static std::shared_ptr<AppDelegate> make(const Platform& platform, const Desktop& desktop);

  AppDelegate(OnlyMake, const Platform& platform, const Desktop& desktop);
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  /// Asks for the permission to capture, so that the user meets that question before the first
  /// recording, and gives the status item its menu.
  void applicationDidFinishLaunching() override;

  /// Closes the file of a recording that runs. Returns when it is complete.
  void applicationWillTerminate() override;

  /// Takes a fresh list of processes and replaces the menu, also the one that opens.
  void menuWillOpen(const std::shared_ptr<NS::Menu>& menu) override;

  // A source or a format that is chosen during a recording counts for the next one.
  void toggleRecording(const Sender& sender) override;
  void selectAllSystemAudio(const Sender& sender) override;
  void selectProcess(const Sender& sender) override;
  void refreshProcessList(const Sender& sender) override;
  void selectFormatM4A(const Sender& sender) override;
  void selectFormatWAV(const Sender& sender) override;
  void revealLastRecording(const Sender& sender) override;
  void checkForUpdates(const Sender& sender) override;
  void showAbout(const Sender& sender) override;
  void quit(const Sender& sender) override;

 private:
  /// Defined by tests only, which hold what the private fields keep and give up.
  friend struct AppDelegateInspector;

  void startRecording();
  void stopRecording();
  void startUITimer();
  void invalidateUITimer();
  void tick();
  void updateStatusItem();
  void promptForPermission();
  void presentError(const RecorderError& error);

  void rebuildMenu();
  void selectFormat(RecordingFormat format);
  void openPrivacySettings();

  /// Seconds since the recording started; 0 when none runs.
  double elapsed();

  /// The file started last: in this run, else as it is stored.
  std::optional<std::filesystem::path> lastRecordingURL() const;

  Platform platform_;
  Desktop desktop_;

  std::shared_ptr<os::Logger> log_;
  Preferences preferences_;
  std::shared_ptr<RecordingEngine> engine_;
  StatusItemController statusItem_;
  UpdaterController updater_;
  RecordingSource selectedSource_ = RecordingSource::allSystemAudio();
  std::vector<RecordingSource> processSnapshot_;

  /// Of the recording that runs or was started last; a stop does not clear it.
  std::optional<std::filesystem::path> currentOutputURL_;

  std::shared_ptr<NS::Timer> uiTimer_;  ///< null when idle

  /// The one-hour warning was given for the recording started last.
  bool warningFired_ = false;
};

}  // namespace audrel
