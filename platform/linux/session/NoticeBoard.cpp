#include "platform/linux/session/NoticeBoard.h"

#include <utility>

namespace audrel::linuxos {

void NoticeBoard::take(const Notice& notice) {
  const std::lock_guard lock(mutex_);
  taken_.push_back(notice);
  source_.callSoon();
}

void NoticeBoard::show() {
  std::vector<Notice> taken;
  {
    const std::lock_guard lock(mutex_);
    taken = std::exchange(taken_, {});
  }
  for (const Notice& notice : taken) {
    if (isWanted(notice)) {
      notifier_.notify(notificationOf(notice));
    }
  }
}

bool NoticeBoard::isWanted(const Notice& notice) {
  const bool isOfSavedRecording = !notice.file.empty() && !notice.isLoss;
  return !isOfSavedRecording || userDefaults_.stringForKey("notifySaved") != "no";
}

Notification NoticeBoard::notificationOf(const Notice& notice) {
  Notification notification{
      .summary = notice.summary,
      .body = notice.body,
      .urgency = notice.isLoss ? Notification::Urgency::critical : Notification::Urgency::normal,
      .tag = notice.matter};
  if (!notice.file.empty()) {
    notification.actions = {
        {.key = "show-file", .label = "Show in Folder", .perform = [this, file = notice.file] {
           workspace_.activateFileViewerSelecting({file});
         }}};
  }
  return notification;
}

}  // namespace audrel::linuxos
