#pragma once

#include <string>
#include <vector>

namespace audrel {

/// A journal in the words of the controller: each start and stop of the engine, each drawing of the
/// status item and each making of a menu is one line. The menus' and the drawings' own lines are
/// held by other tests and by the transcripts.
std::vector<std::string> summaryOf(const std::vector<std::string>& journal);

}  // namespace audrel
