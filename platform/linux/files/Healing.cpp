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
  isToEnd_ = true;
  if (thread_.joinable()) {
    thread_.join();
  }
}

void Healing::heal() noexcept {
  try {
    healer_.heal(isToEnd_);
  } catch (const std::bad_alloc&) {
    logger_->error("There is no memory left to look for recordings that were cut off.");
  }
  isUnderWay_ = false;
}

}  // namespace audrel::linuxos
