#pragma once

#include <string>

#include "platform/AVFAudio.h"

/// Texts of log lines that must not follow the user's locale.
namespace audrel {

/// `number` in fixed notation with `decimals` digits after the point, as "%.*f" has it in the C
/// locale.
std::string fixedNotation(double number, int decimals);

/// A settings dictionary on one line, in the order of its keys:
/// ["AVFormatIDKey": 1819304813, "AVSampleRateKey": 48000.0].
std::string describe(const AV::Settings& settings);

}  // namespace audrel
