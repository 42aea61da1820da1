#pragma once

#include <mutex>
#include <vector>

#include "platform/linux/loop/LoopSource.h"
#include "platform/linux/session/Notifier.h"
#include "platform/linux/system/Notice.h"

namespace audrel::linuxos {

/// Has what other threads take note of shown as notifications, in their order, from the main loop.
/// Made on the main thread.
class NoticeBoard {
 public:
  /// It must outlive this.
  explicit NoticeBoard(Notifier& notifier) : notifier_(notifier) {}

  /// Any thread; returns at once.
  void take(const Notice& notice);

 private:
  void show();

  Notifier& notifier_;
  std::mutex mutex_;
  std::vector<Notice> taken_;
  LoopSource source_{[this] { show(); }};
};

}  // namespace audrel::linuxos
