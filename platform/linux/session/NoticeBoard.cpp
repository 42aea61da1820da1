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
    notifier_.notify(
        {.summary = notice.summary,
         .body = notice.body,
         .urgency = notice.isLoss ? Notification::Urgency::critical : Notification::Urgency::normal,
         .tag = notice.matter});
  }
}

}  // namespace audrel::linuxos
