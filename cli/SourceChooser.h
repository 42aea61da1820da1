#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "cli/ProcessObjects.h"
#include "platform/Platform.h"

namespace audrel::cli {

/// Why no process could be chosen: none is meant, or several.
struct NoSource {
  std::string complaint;               ///< a sentence, safe for a terminal
  std::vector<Recordable> candidates;  ///< what there is to choose from; may be empty
};

/// The process that `who` means: "#" and an object id, a process id, or else a name or bundle
/// identifier, first as it is spelled, then whatever the case, then as a part of a name. Names are
/// looked up among the listed processes; ids among all.
std::variant<Recordable, NoSource> chooseProcess(const Platform& platform, std::string_view who);

}  // namespace audrel::cli
