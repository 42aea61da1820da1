#pragma once

#include <string>
#include <string_view>

#include "platform/Foundation.h"

namespace audrel {

/// The parts of a recording's file name. A namespace: it has no instances.
struct FilenameFormatter {
  FilenameFormatter() = delete;

  /// `name` (UTF-8, valid or not) with every space (U+0020 alone) turned into "-" and everything
  /// but the letters A to Z and a to z, the digits and "-" removed. May be empty.
  static std::string sanitize(std::string_view name);

  /// `date` in the system's current time zone as "yyyy-MM-dd-HHmmss", whatever the locale.
  static std::string timestampString(NS::Date date);
};

}  // namespace audrel
