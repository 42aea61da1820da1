#pragma once

#include <chrono>
#include <string>

namespace audrel::pwtest {

/// Writes a WAV file of a tone for players that are not ours: 48 kHz, stereo, 16-bit. The
/// frequency is in Hz; the amplitude of full scale is 1, of silence 0.
void writeTone(const std::string& path, double frequency, double amplitude,
               std::chrono::milliseconds length);

}  // namespace audrel::pwtest
