#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::pwtest {

/// A player on PulseAudio that is not ours, with the server that it needs.
class PulsePlayer {
 public:
  static constexpr std::uint64_t playedFrames = 48'000;

  /// Plays so many frames of a stamped stream under that node name, all of which the server has
  /// before it begins: it plays them whole however fast the graph goes.
  PulsePlayer(const std::string& socketPath, const std::string& name, std::uint32_t stampStream);

 private:
  support::TemporaryFolder folder_;
  std::unique_ptr<support::ChildProcess> server_;
  std::unique_ptr<support::ChildProcess> player_;
};

}  // namespace audrel::pwtest
