#pragma once

#include "platform/Diagnostics.h"

namespace audrel::macos {

/// Core Audio says all that it has to say in its status results, and does not tell of frames that
/// it lost.
class Diagnostics final : public capture::Diagnostics {
 public:
  std::optional<std::string> diagnosis() override { return std::nullopt; }
  std::uint64_t lostFrames() override { return 0; }
};

}  // namespace audrel::macos
