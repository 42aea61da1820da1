#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/pipewire/Graph.h"

namespace audrel::linuxos {

/// Whether the node plays: it is a playback stream, or a client of JACK that has audio outputs.
bool isPlayback(const Graph& graph, std::uint32_t nodeId);

/// Whether the node is a client of JACK, as far as its details have arrived.
bool isJackClient(const GraphNode& node);

/// The ports of sinks that the output port is linked to.
std::vector<const GraphPort*> sinkPortsOf(const Graph& graph, std::uint32_t outputPortId);

/// Whether a recording of everything has what the node plays, so that all that is heard is in it,
/// and once.
///
/// A playback stream counts wherever it goes, unless it is a copy: the far end of a loopback or
/// effect chain that is fed by a sink or by what counts. One that is fed by a source (a line-in, a
/// telephone) plays audio of its own.
///
/// A client of JACK counts while one of its outputs is linked to a sink, unless links lead to its
/// inputs from a sink's monitor or from what counts: its own sound cannot be told from what it
/// passes on. Of clients that feed each other in a circle the oldest counts.
bool countsForEverything(const Graph& graph, std::uint32_t nodeId);

}  // namespace audrel::linuxos
