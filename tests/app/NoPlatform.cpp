// The operating system of the program `audrel-without-platform`.

#include <stdexcept>

#include "platform/NativePlatform.h"

std::vector<std::string> NativePlatform::typedArguments(
    std::vector<std::string> arguments, std::span<const std::string_view> /*known*/) {
  return arguments;
}

std::unique_ptr<NativePlatform> NativePlatform::make() {
  throw std::runtime_error("a platform was made");
}
