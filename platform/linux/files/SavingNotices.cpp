#include "platform/linux/files/SavingNotices.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <string>
#include <utility>

#include "platform/linux/files/FileErrors.h"

namespace audrel::linuxos {

namespace {

/// What writing a file is about. A finished recording is another matter: it takes no notice of a
/// loss away.
constexpr const char* disk = "disk";

}  // namespace

Notice slowSavingNotice() {
  return {.matter = disk,
          .summary = "Saving the recording",
          .body =
              "The disk is slow: the recording is not yet safe on it. Do not switch the "
              "computer off."};
}

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
      tell({.matter = disk,
            .summary = "Recording is saved again",
            .body = "Writing " + quotedName(path_) + " works again."});
    }
  } catch (const std::bad_alloc&) {
  }
}

void SavingNotices::fileEnded(double length, double missing, const std::string& problem) noexcept {
  if (missing <= 0) {
    blockEnded({});  // what waited until the end was written then
  }
  try {
    if (missing > 0) {
      tellOfMissing(missing, problem);
    } else if (length > 0) {
      tellThatSaved(length, problem);
    }
  } catch (const std::bad_alloc&) {
  }
}

void SavingNotices::tell(const BlockFile::Failure& failure) const {
  const std::string why = reason(path_, failure.code);
  if (failure.dropped) {
    tell({.matter = disk,
          .summary = "Audio is being lost",
          .body = why + " Until then the recording is silent.",
          .isLoss = true});
    return;
  }
  const auto minutes = std::max(1L, std::lround(memory_ / 60));
  tell({.matter = disk,
        .summary = "Recording cannot be saved",
        .body = why + " Nothing is lost yet: memory holds about " + std::to_string(minutes) +
                (minutes == 1 ? " minute." : " minutes."),
        .isLoss = true});
}

void SavingNotices::tellOfMissing(double seconds, const std::string& problem) const {
  std::string body = lengthText(seconds) + " of " + quotedName(path_) + " are missing.";
  if (lastCode_ != 0) {
    body += ' ' + reason(path_, lastCode_);
  } else if (!problem.empty()) {
    body += ' ' + problem;
  }
  tell({.matter = disk,
        .summary = "Recording is incomplete",
        .body = std::move(body),
        .isLoss = true,
        .file = path_});
}

void SavingNotices::tellThatSaved(double length, const std::string& problem) const {
  std::string body = path_.filename().string() + ", " + clockText(length);
  if (!problem.empty()) {
    body += ". " + problem;
  }
  tell({.matter = "recording",
        .summary = "Recording saved",
        .body = std::move(body),
        .isLoss = !problem.empty(),
        .file = path_});
}

void SavingNotices::tell(const Notice& notice) const {
  if (tell_) {
    tell_(notice);
  }
}

}  // namespace audrel::linuxos
