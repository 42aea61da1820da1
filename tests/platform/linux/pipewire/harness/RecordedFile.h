#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

#include "tests/platform/linux/pipewire/harness/Segments.h"

/// Recordings as other people's programs read them.
namespace audrel::pwtest {

/// What an application played and no recorder need have yet: in a cycle the application comes
/// first.
constexpr std::uint64_t onTheWay = 4'096;  // frames

/// A WAV of two channels at 48 kHz, whole and in order; empty when it is none.
Audio readWav(const std::filesystem::path& path);

/// What an M4A of that kind sounds like, without its encoder's delay; empty when it is none.
Audio readM4a(const std::filesystem::path& path);

/// That a WAV is one stamped stream from its start to its end, and holds what was played while it
/// was recorded, which was so many frames at least.
void expectWholeTrack(const std::filesystem::path& wav, std::uint32_t stream,
                      std::uint64_t playedFrames);

/// That a tone is in both channels from frame `begin` on, without a break, at half of full scale
/// to within `tolerance`.
void expectUnbrokenTone(const Audio& audio, std::size_t begin, double frequency, double tolerance);

}  // namespace audrel::pwtest
