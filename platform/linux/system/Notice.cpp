#include "platform/linux/system/Notice.h"

#include <cmath>

namespace audrel::linuxos {

std::string lengthText(double seconds) {
  const long milliseconds = std::lround(std::ceil(seconds * 1000));
  if (milliseconds < 1000) {
    return std::to_string(milliseconds) + " ms";
  }
  const long tenths = (milliseconds + 99) / 100;
  return std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + " s";
}

}  // namespace audrel::linuxos
