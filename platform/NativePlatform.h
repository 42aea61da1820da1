#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Desktop.h"
#include "platform/Platform.h"

namespace capture {
class FileRepair;
}

/// The operating system that the program was built for. Only a process entry makes one.
class NativePlatform {
 public:
  /// Those of a process's arguments, without its name, that a person typed. A system that adds
  /// arguments of its own may leave out whatever is not among the `known` ones.
  static std::vector<std::string> typedArguments(std::vector<std::string> arguments,
                                                 std::span<const std::string_view> known);

  static std::unique_ptr<NativePlatform> make();
  virtual ~NativePlatform() = default;

  virtual Platform interfaces() = 0;

  /// Where the log comes out on standard error, leaves out what has these categories: the program
  /// tells it there itself.
  virtual void keepOffStandardError(std::set<std::string, std::less<>> categories) = 0;

  /// Repairs recordings that were cut off; null where the system offers no means.
  virtual capture::FileRepair* fileRepair() { return nullptr; }

  /// What the menu-bar program needs besides; made on the first call. Nothing when that program
  /// runs already in this session, which the user was told.
  virtual std::optional<Desktop> desktop() = 0;

  /// Starts a private audio server that plays a melody and turns the hardware layer to it, for as
  /// long as the platform lives. Before anything was asked of the hardware layer. Nothing on
  /// success, else one sentence on why it failed and what to do.
  virtual std::optional<std::string> startDemo() = 0;
};
