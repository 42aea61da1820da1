#pragma once

#include <optional>

#include "platform/FileRepair.h"
#include "platform/linux/files/CheckedFile.h"

namespace audrel::linuxos {

/// Makes the header of a WAV file of ours count the whole frames that are there, in place, once
/// they are durable.
///
/// Nothing when the file is none of ours. What fails throws, as `CheckedFile` does; the file then
/// plays as before.
std::optional<capture::Repair> repairWav(CheckedFile& file);

}  // namespace audrel::linuxos
