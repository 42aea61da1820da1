#include "platform/linux/aac/AacPreload.h"

#include <string>
#include <system_error>

#include "platform/linux/aac/AacModule.h"

namespace audrel::linuxos {

void AacPreload::begin() {
  if (loading_.valid()) {
    return;
  }
  try {
    loading_ = std::async(std::launch::async, [] {
      std::string untold;
      aacFunctions(&untold);
    });
  } catch (const std::system_error&) {
    return;  // it is loaded when the file is opened
  }
}

}  // namespace audrel::linuxos
