#pragma once

#include "cli/Console.h"
#include "cli/Options.h"
#include "cli/Signals.h"
#include "platform/FileRepair.h"

namespace audrel::cli {

/// Repairs the files of `options`, each with a line on what became of it. `repairs` may be null.
/// A signal that asks to stop takes effect between two files.
int repair(capture::FileRepair* repairs, const Options& options, Signals& signals,
           Console& console);

}  // namespace audrel::cli
