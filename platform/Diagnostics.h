#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// What a platform can tell about capturing beyond the frameworks' status results.
namespace capture {

class Diagnostics {
 public:
  virtual ~Diagnostics() = default;

  /// One sentence on why the last failed call of the hardware layer failed ("PipeWire is not
  /// running: ..."), with what to do about it; nothing when there is no more to say.
  virtual std::optional<std::string> diagnosis() = 0;

  /// Frames that the system did not deliver in time during the current or last run of a device
  /// and that stand as silence in the recording; while the output changes it may be fewer, or no
  /// silence. Any thread.
  virtual std::uint64_t lostFrames() = 0;
};

}  // namespace capture
