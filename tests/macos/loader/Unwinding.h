#pragma once

#include <cstddef>
#include <vector>

#include "tests/macos/loader/Image.h"

namespace audrel::macho {

/// Lets exceptions pass the functions of an image, for as long as it lives: what macOS reads from
/// the image's compact tables, written again in the form that Linux reads. Functions without a
/// frame pointer are left out, for macOS keeps one wherever there is a call: an exception that met
/// one would end the process.
class Unwinding {
 public:
  /// Throws std::runtime_error when a table has an unknown format.
  explicit Unwinding(const Image& image);
  ~Unwinding();
  Unwinding(const Unwinding&) = delete;
  Unwinding& operator=(const Unwinding&) = delete;

 private:
  std::vector<std::byte> descriptions_;
};

}  // namespace audrel::macho
