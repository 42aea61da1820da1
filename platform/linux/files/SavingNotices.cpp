#include "platform/linux/files/SavingNotices.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <string>
#include <utility>

#include "platform/linux/files/FileErrors.h"

namespace audrel::linuxos {

SavingNotices::SavingNotices(std::filesystem::path path, double memory, NoticeTaker tell)
    : path_(std::move(path)), memory_(memory), tell_(std::move(tell)) {}

void SavingNotices::blockEnded(const std::optional<BlockFile::Failure>& failure) noexcept {
  if (failure) {
    lastCode_ = failure->code;
  }
  // Small blocks may still find room in a memory that is full for others.
  const bool isKnown =
      failure && told_ && failure->code == told_->code && (told_->dropped || !failure->dropped);
  if (isKnown || (!failure && !told_)) {
    return;
  }
  told_ = failure;
  try {
    if (failure) {
      tell(*failure);
    } else {
      tell("Recording is saved again", "Writing " + quotedName(path_) + " works again.", false);
    }
  } catch (const std::bad_alloc&) {
  }
}

void SavingNotices::fileEnded(double missing) noexcept {
  if (missing <= 0) {
    return;
  }
  try {
    std::string body = lengthText(missing) + " of " + quotedName(path_) + " are missing.";
    if (lastCode_ != 0) {
      body += ' ' + reason(path_, lastCode_);
    }
    tell("Recording is incomplete", std::move(body), true);
  } catch (const std::bad_alloc&) {
  }
}

void SavingNotices::tell(const BlockFile::Failure& failure) const {
  const std::string why = reason(path_, failure.code);
  if (failure.dropped) {
    tell("Audio is being lost", why + " Until then the recording is silent.", true);
    return;
  }
  const auto minutes = std::max(1L, std::lround(memory_ / 60));
  tell("Recording cannot be saved",
       why + " Nothing is lost yet: memory holds about " + std::to_string(minutes) +
           (minutes == 1 ? " minute." : " minutes."),
       true);
}

void SavingNotices::tell(std::string summary, std::string body, bool isLoss) const {
  if (tell_) {
    tell_({.matter = "disk",
           .summary = std::move(summary),
           .body = std::move(body),
           .isLoss = isLoss});
  }
}

}  // namespace audrel::linuxos
