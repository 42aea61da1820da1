#pragma once

#include <optional>
#include <string>

#include "platform/AVFAudio.h"

namespace audrel::cli {

/// The largest magnitude among the buffer's samples, 1 being full scale. Nothing when they are no
/// 32-bit floats, the only samples that taps deliver. Samples that are no numbers don't count.
std::optional<float> peakOf(AV::PCMBuffer& buffer);

/// A peak in decibels relative to full scale; nothing for silence, which has none.
std::optional<double> decibels(float peak);

/// "-12.3 dBFS", or "silence".
std::string describePeak(float peak);

}  // namespace audrel::cli
