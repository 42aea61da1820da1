#include "platform/linux/system/Notice.h"

#include <cmath>

namespace audrel::linuxos {

namespace {

std::string twoDigits(long number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

std::string lengthText(double seconds) {
  const long milliseconds = std::lround(std::ceil(seconds * 1000));
  if (milliseconds < 1000) {
    return std::to_string(milliseconds) + " ms";
  }
  const long tenths = (milliseconds + 99) / 100;
  return std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + " s";
}

std::string clockText(double seconds) {
  constexpr long minute = 60;
  constexpr long hour = 60 * minute;
  const auto whole = static_cast<long>(seconds);
  const std::string hours = whole < hour ? "" : std::to_string(whole / hour) + ':';
  return hours + twoDigits(whole % hour / minute) + ':' + twoDigits(whole % minute);
}

}  // namespace audrel::linuxos
