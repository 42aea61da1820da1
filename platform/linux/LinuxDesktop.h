#pragma once

#include <memory>
#include <stop_token>

#include "platform/AppKit.h"
#include "platform/Desktop.h"
#include "platform/Foundation.h"
#include "platform/Log.h"
#include "platform/linux/aac/AacPreload.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/files/AudioFramework.h"
#include "platform/linux/files/Healing.h"
#include "platform/linux/loop/RunLoop.h"
#include "platform/linux/pipewire/CaptureHardware.h"
#include "platform/linux/session/Alert.h"
#include "platform/linux/session/Announcer.h"
#include "platform/linux/session/ApplicationService.h"
#include "platform/linux/session/LogoutWatch.h"
#include "platform/linux/session/NoticeBoard.h"
#include "platform/linux/session/Notifier.h"
#include "platform/linux/session/RecordingState.h"
#include "platform/linux/session/SoftwareUpdates.h"
#include "platform/linux/session/URLParser.h"
#include "platform/linux/session/UserDefaults.h"
#include "platform/linux/session/Workspace.h"
#include "platform/linux/tray/Application.h"
#include "platform/linux/tray/TrayAppKit.h"

namespace audrel::linuxos {

/// The desktop session's part of the platform: bus, panel, alerts, settings. Main thread.
class LinuxDesktop {
 public:
  /// The references must outlive it.
  LinuxDesktop(CaptureHardware& hardware, AudioFramework& audioFramework, Healing& healing,
               NS::FileManager& fileManager, os::Log& log);
  ~LinuxDesktop();
  LinuxDesktop(const LinuxDesktop&) = delete;
  LinuxDesktop& operator=(const LinuxDesktop&) = delete;

  /// Makes this process the session's one Audrel; whether it is. If it is not, the user was told.
  bool claimSession();

  /// To be called when a recording has started or stopped.
  void recordingChanged() const { recordingState_.changed(); }

  /// Tells that saving the recording takes long. For a thread of its own, while the main thread
  /// waits for that.
  void tellOfSlowSaving(const std::stop_token& stop) const;

  Desktop interfaces();

 private:
  /// What the launcher's entry can ask for, as choices from the menu: so they do what the menu
  /// does, and only where the menu offers it. A start or stop is over when it returns, but for the
  /// failure's alert.
  class Commands final : public ApplicationCommands {
   public:
    explicit Commands(LinuxDesktop& desktop) : desktop_(desktop) {}
    void startRecording() override;
    void stopRecording() override;
    void toggleRecording() override;
    void quit() override;
    void activate() override;

   private:
    LinuxDesktop& desktop_;
  };

  std::unique_ptr<NS::Alert> makeAlert();
  Announcer::Controls announcerControls();
  void menuOpened(const MenuTree& menu);
  void panelChanged(bool isThere);

  CaptureHardware& hardware_;
  AudioFramework& audioFramework_;
  Healing& healing_;
  std::shared_ptr<os::Logger> logger_;
  Application application_;
  SessionBus bus_;
  Notifier notifier_;
  Workspace workspace_;
  UserDefaults userDefaults_;
  NoticeBoard notices_{notifier_, workspace_, userDefaults_};
  URLParser urlParser_;
  RunLoop runLoop_;
  SoftwareUpdates updates_;
  TrayAppKit appKit_;
  AacPreload aacPreload_;
  ApplicationService service_;
  RecordingState recordingState_{bus_, [this] { return hardware_.isRunning(); }};
  Announcer announcer_;
  LogoutWatch logout_;
  std::shared_ptr<Commands> commands_ = std::make_shared<Commands>(*this);
};

}  // namespace audrel::linuxos
