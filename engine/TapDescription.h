#pragma once

#include "model/RecordingSource.h"
#include "platform/CoreAudio.h"

namespace audrel {

/// The name of the tap and of the aggregate device around it.
inline constexpr const char* tapName = "Audrel Tap";

/// A tap of `source`, in stereo: for all system audio everything, the recorder itself included; for
/// a process that one process object. The tapped audio stays audible.
CA::TapDescription tapDescription(const RecordingSource& source);

}  // namespace audrel
