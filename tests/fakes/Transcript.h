#pragma once

#include <optional>
#include <string>

namespace audrel::fakes {

/// Compares `text` with `docs/transcripts/<name>.txt`. Nothing when they are equal, else what to
/// tell whoever runs the tests. With AUDREL_UPDATE_TRANSCRIPTS=1 in the environment it writes the
/// file instead.
std::optional<std::string> differenceFromTranscript(const std::string& name,
                                                    const std::string& text);

}  // namespace audrel::fakes
