#pragma once

#include <string>

#include "cli/Console.h"
#include "cli/Options.h"
#include "cli/Signals.h"
#include "platform/Platform.h"

namespace audrel::cli {

/// What the program answers to the shell.
struct ExitStatus {
  static constexpr int success = 0;
  static constexpr int failure = 1;
  static constexpr int usage = 2;
};

/// Prints the processes that can be recorded.
int list(const Platform& platform, const Options& options, Console& console);

/// Records until a signal asks to stop or the length is reached, and reports. A failed write does
/// not end the recording, but audio that could not be written makes it a failure.
int record(const Platform& platform, const Options& options, Signals& signals, Console& console);

/// Tells why the system refused, before the program's own text, where the platform knows.
void complainWithDiagnosis(Console& console, const Platform& platform, const std::string& text);

}  // namespace audrel::cli
