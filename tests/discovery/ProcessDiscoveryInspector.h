#pragma once

#include <utility>
#include <vector>

#include "discovery/ProcessDiscovery.h"

namespace audrel {

/// Opens the two halves of the discovery to its tests.
struct ProcessDiscoveryInspector {
  static auto rawProcesses(const Platform& platform) {
    return ProcessDiscovery::rawProcesses(platform);
  }
  static auto filter(NS::Collation& collation,
                     std::vector<ProcessDiscovery::RawProcessInfo> processes) {
    return ProcessDiscovery::filter(collation, std::move(processes));
  }
};

}  // namespace audrel
