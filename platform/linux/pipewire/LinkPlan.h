#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <set>

#include "platform/linux/pipewire/Graph.h"

namespace audrel::linuxos {

/// A link from an output port to an input port, by their ids.
struct PortPair {
  std::uint32_t output = unknownGlobal;
  std::uint32_t input = unknownGlobal;

  auto operator<=>(const PortPair&) const = default;
};

/// The links that bring every node that `isTapped` into the tap's input ports.
///
/// A stream of one or two channels goes to the front pair alone, mono to both at unity: with a
/// surround sink it has upmixed ports too, and taking them as well would be too loud. A surround
/// stream keeps its channels, and the tap mixes them down.
std::set<PortPair> planLinks(const Graph& graph, std::uint32_t tapNodeId,
                             const std::function<bool(const GraphNode&)>& isTapped);

}  // namespace audrel::linuxos
