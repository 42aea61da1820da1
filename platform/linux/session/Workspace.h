#pragma once

#include "platform/AppKit.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/session/Notifier.h"

namespace audrel::linuxos {

/// The desktop's file manager, browser and settings. What cannot be opened is told by a
/// notification that says where to look. Main thread.
class Workspace final : public NS::Workspace {
 public:
  /// Both must outlive it, and be called back no more once it has gone.
  Workspace(SessionBus& bus, Notifier& notifier) : bus_(bus), notifier_(notifier) {}

  /// The program's link to the privacy settings opens this desktop's own; everything else the
  /// user's program for it.
  bool openURL(const NS::URL& url) override;

  /// Where the file manager cannot select files, the first one's folder is opened. Returns at once.
  void activateFileViewerSelecting(const std::vector<std::filesystem::path>& files) override;

 private:
  void openFolderOf(const std::filesystem::path& file);

  SessionBus& bus_;
  Notifier& notifier_;
};

}  // namespace audrel::linuxos
