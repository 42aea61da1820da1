#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace audrel::fakemac {

/// Lets every running IO procedure have one cycle of input, on a thread of its own, and returns
/// the highest status. An empty vector is a buffer without data, of `bytesWithoutData` bytes.
std::int32_t deliver(const std::vector<std::vector<std::byte>>& buffers,
                     std::uint32_t bytesWithoutData = 0);

/// Taps, aggregate devices and IO procedures that exist.
std::size_t hardwareObjects();

/// Forgets them.
void resetHardware();

}  // namespace audrel::fakemac
