#include "platform/linux/files/Healing.h"

#include <new>
#include <string>
#include <system_error>

#include "platform/linux/system/AllSignalsBlocked.h"

namespace audrel::linuxos {

void Healing::begin() {
  if (isToEnd_ || isUnderWay_.exchange(true)) {
    return;
  }
  if (thread_.joinable()) {
    thread_.join();  // it has done its work
  }
  try {
    const AllSignalsBlocked signalsBelongToTheMainThread;
    thread_ = std::thread([this] { heal(); });
  } catch (const std::system_error& error) {
    isUnderWay_ = false;
    logger_->error(std::string("Nothing looks for recordings that were cut off: ") + error.what());
  }
}

void Healing::end() {
  {
    const std::lock_guard lock(mutex_);
    isToEnd_ = true;
  }
  ending_.notify_one();
  if (thread_.joinable()) {
    thread_.join();
  }
}

void Healing::heal() noexcept {
  try {
    if (healer_.heal(isToEnd_)) {
      waitForRest();
      healer_.heal(isToEnd_);
    }
  } catch (const std::bad_alloc&) {
    logger_->error("There is no memory left to look for recordings that were cut off.");
  }
  isUnderWay_ = false;
}

void Healing::waitForRest() {
  std::unique_lock lock(mutex_);
  ending_.wait_for(lock, rest_, [this] { return isToEnd_.load(); });
}

}  // namespace audrel::linuxos
