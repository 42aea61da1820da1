#pragma once

#include <mutex>
#include <vector>

#include "platform/AppKit.h"
#include "platform/Foundation.h"
#include "platform/linux/loop/LoopSource.h"
#include "platform/linux/session/Notifier.h"
#include "platform/linux/system/Notice.h"

namespace audrel::linuxos {

/// Has what other threads take note of shown as notifications, in their order, from the main loop.
/// One with a file offers to show that. Made on the main thread.
///
/// Who does not want to be told of finished recordings has "notifySaved" as "no" in the user
/// defaults, which count at once. Losses are always told.
class NoticeBoard {
 public:
  /// They must outlive this.
  NoticeBoard(Notifier& notifier, NS::Workspace& workspace, NS::UserDefaults& userDefaults)
      : notifier_(notifier), workspace_(workspace), userDefaults_(userDefaults) {}

  /// Any thread; returns at once.
  void take(const Notice& notice);

 private:
  void show();
  bool isWanted(const Notice& notice);
  Notification notificationOf(const Notice& notice);

  Notifier& notifier_;
  NS::Workspace& workspace_;
  NS::UserDefaults& userDefaults_;
  std::mutex mutex_;
  std::vector<Notice> taken_;
  LoopSource source_{[this] { show(); }};
};

}  // namespace audrel::linuxos
