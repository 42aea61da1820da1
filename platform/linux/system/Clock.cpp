#include "platform/linux/system/Clock.h"

namespace audrel::linuxos {

NS::Date Clock::now() {
  return std::chrono::system_clock::now();
}

}  // namespace audrel::linuxos
