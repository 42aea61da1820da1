#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct AudioStreamBasicDescription;

namespace audrel::fakemac {

/// As "lpcm at 48000 Hz, 2 channels, 8 bytes a frame".
std::string described(const AudioStreamBasicDescription& format);

/// Lets every running IO procedure have one cycle of input, on a thread of its own, and returns
/// the highest status. An empty vector is a buffer without data, of `bytesWithoutData` bytes.
std::int32_t deliver(const std::vector<std::vector<std::byte>>& buffers,
                     std::uint32_t bytesWithoutData = 0);

/// One cycle of 8 bytes for each IO procedure that is installed now, running or not, on the thread
/// that calls it: also while they are stopped and destroyed, and afterwards. Leaves threads as they
/// are, without order between them.
std::function<std::int32_t()> cycleAtAnyTime();

/// What exists, in the order of the ids.
std::vector<std::uint32_t> taps();
std::vector<std::uint32_t> aggregateDevices();
std::size_t installedIOProcs();

/// All of them.
std::size_t hardwareObjects();

/// Forgets them.
void resetHardware();

}  // namespace audrel::fakemac
