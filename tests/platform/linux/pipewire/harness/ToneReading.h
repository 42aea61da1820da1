#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/platform/linux/pipewire/harness/Segments.h"

namespace audrel::pwtest {

enum class Channel : std::uint8_t { left, right };

/// A tone as it stands in one channel of a recording, read in pieces of 50 ms.
struct ToneReading {
  double frequency = 0;     ///< Hz
  double lowestLevel = 0;   ///< amplitude, full scale is 1
  double highestLevel = 0;  ///< amplitude
  /// How far the phase is, at most, from where a tone without a break would be, in cycles.
  double phaseError = 0;
};

/// `frequency` is what is looked for; another tone shows as a low level. From `begin` to the end.
ToneReading readTone(const Audio& audio, Channel channel, std::size_t begin, double rate,
                     double frequency);

/// The first frame that is not silent.
std::size_t firstSound(const Audio& audio);

}  // namespace audrel::pwtest
