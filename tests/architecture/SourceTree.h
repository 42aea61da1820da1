#pragma once

#include <vector>

#include "tests/architecture/IncludeRules.h"

namespace audrel::architecture {

/// Every source of the project but what is built.
std::vector<Source> sourcesInTheTree();

}  // namespace audrel::architecture
