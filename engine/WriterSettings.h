#pragma once

#include "model/RecordingFormat.h"
#include "platform/AVFAudio.h"

namespace audrel {

/// How the output file is encoded: M4A as AAC of 256 kbit/s at high quality, WAV as little-endian,
/// interleaved 16-bit integers. Sample rate and channel count are those of `input`, the tap's own
/// format, whatever they are.
AV::Settings writerSettings(RecordingFormat format, const AV::AudioFormat& input);

}  // namespace audrel
