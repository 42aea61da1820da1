#pragma once

#include <filesystem>

#include "platform/FileRepair.h"
#include "platform/linux/files/OpenFile.h"

namespace audrel::linuxos {

using capture::LockRule;
using capture::Repair;

/// Makes a recording whole that was cut off, in place: an M4A gets its index, a WAV a header that
/// counts what is there. Killed meanwhile, at whichever write, the file plays as before and can be
/// repaired again. What is not exactly as this program writes it stays as it is, and so does what
/// is whole. Opens `path` without following a link, and holds its lock while it works.
Repair repair(const std::filesystem::path& path, LockRule rule);

/// The same for a file that is open. Nothing but a regular one is read.
Repair repair(OpenFile& file, LockRule rule);

/// The same for a regular file that is open, and locked where there are locks. Never `inUse`.
Repair repair(OpenFile& file);

}  // namespace audrel::linuxos
