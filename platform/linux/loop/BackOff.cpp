#include "platform/linux/loop/BackOff.h"

#include <algorithm>
#include <utility>

namespace audrel::linuxos {

namespace {

constexpr std::chrono::milliseconds longest = std::chrono::seconds(30);

}  // namespace

BackOff::BackOff(std::chrono::milliseconds first, std::function<void()> attempt)
    : first_(first), next_(first), attempt_(std::move(attempt)) {}

void BackOff::attemptAgain() {
  attempt_.callAfter(next_);
  next_ = std::min(next_ * 2, longest);
}

void BackOff::reset() {
  attempt_.cancel();
  next_ = first_;
}

}  // namespace audrel::linuxos
