#include "model/FilenameFormatter.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>

namespace audrel {
namespace {

constexpr std::string_view allowedCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-";

std::tm localTime(NS::Date date) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(date);
  const std::time_t time = std::chrono::system_clock::to_time_t(seconds);
  // localtime_r alone need not notice that the zone was changed while the program runs.
  tzset();
  std::tm fields{};
  localtime_r(&time, &fields);
  return fields;
}

std::string padded(int number, std::size_t width) {
  std::string digits = std::to_string(number);
  digits.insert(0, width - std::min(width, digits.size()), '0');
  return digits;
}

}  // namespace

std::string FilenameFormatter::sanitize(std::string_view name) {
  std::string sanitized(name);
  std::replace(sanitized.begin(), sanitized.end(), ' ', '-');
  // Every byte of a character beyond ASCII is beyond ASCII itself, so bytes can be judged alone.
  std::erase_if(sanitized,
                [](char byte) { return allowedCharacters.find(byte) == std::string_view::npos; });
  return sanitized;
}

std::string FilenameFormatter::timestampString(NS::Date date) {
  const std::tm time = localTime(date);
  return padded(time.tm_year + 1900, 4) + "-" + padded(time.tm_mon + 1, 2) + "-" +
         padded(time.tm_mday, 2) + "-" + padded(time.tm_hour, 2) + padded(time.tm_min, 2) +
         padded(time.tm_sec, 2);
}

}  // namespace audrel
