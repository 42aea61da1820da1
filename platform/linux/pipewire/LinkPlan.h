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

/// Which output ports of a node a tap takes in.
enum class TappedPorts {
  none,
  heard,  ///< all of a stream; those of a JACK client that are linked to a sink
  all,
};

using TappedPortsOf = std::function<TappedPorts(std::uint32_t nodeId)>;

/// The links that bring what is tapped into the tap's input ports.
///
/// A stream of one or two channels goes to the front pair alone, mono to both at unity: with a
/// surround sink it has upmixed ports too, and taking them as well would be too loud. A surround
/// stream keeps its channels, and the tap mixes them down.
///
/// The ports of a JACK client have no channels. They are taken for those of the sink's ports that
/// they are linked to, else by turns for left and right, an only one for both.
std::set<PortPair> planLinks(const Graph& graph, std::uint32_t tapNodeId,
                             const TappedPortsOf& tappedPortsOf);

}  // namespace audrel::linuxos
