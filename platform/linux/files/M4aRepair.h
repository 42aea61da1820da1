#pragma once

#include <optional>

#include "platform/FileRepair.h"
#include "platform/linux/files/CheckedFile.h"

namespace audrel::linuxos {

/// Finishes an M4A file of ours in place: its index is appended in a `free` box, and made durable
/// before the eight bytes that make it count. What follows the last whole fragment stays as unused
/// bytes, in a `free` box until then. An index that is there already, whole and right, is taken.
/// All whole packets play, without the encoder's padding: how many frames the last ones stand for
/// is known only to who stops.
///
/// Nothing when the file is none of ours. What fails throws, as `CheckedFile` does; the file then
/// plays as before.
std::optional<capture::Repair> repairM4a(CheckedFile& file);

}  // namespace audrel::linuxos
