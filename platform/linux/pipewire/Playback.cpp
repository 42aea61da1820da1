#include "platform/linux/pipewire/Playback.h"

#include <algorithm>
#include <set>

namespace audrel::linuxos {

namespace {

const GraphNode* nodeOf(const Graph& graph, std::uint32_t id) {
  const auto found = graph.nodes.find(id);
  return found == graph.nodes.end() ? nullptr : &found->second;
}

bool isSink(const GraphNode& node) {
  return node.mediaClass == "Audio/Sink" || node.mediaClass == "Audio/Duplex";
}

/// The nodes whose sound links lead to the node, directly or through others; itself when it is in a
/// circle. A link whose port is not known carries no audio.
std::set<std::uint32_t> feedersOf(const Graph& graph, std::uint32_t nodeId) {
  std::set<std::uint32_t> feeders;
  std::vector<std::uint32_t> unseen = {nodeId};
  while (!unseen.empty()) {
    const std::uint32_t fed = unseen.back();
    unseen.pop_back();
    for (const auto& [id, link] : graph.links) {
      if (link.inputNodeId == fed && graph.ports.contains(link.outputPortId) &&
          feeders.insert(link.outputNodeId).second) {
        unseen.push_back(link.outputNodeId);
      }
    }
  }
  return feeders;
}

bool isJackClientOnSink(const Graph& graph, std::uint32_t nodeId) {
  const GraphNode* node = nodeOf(graph, nodeId);
  return node != nullptr && isJackClient(*node) &&
         std::ranges::any_of(graph.ports, [&](const auto& entry) {
           const auto& [id, port] = entry;
           return port.nodeId == nodeId && !port.isInput && !sinkPortsOf(graph, id).empty();
         });
}

/// Whether `feeder`, which feeds the other, is to count rather than that one.
bool comesFirst(const Graph& graph, std::uint32_t feeder, std::uint32_t other) {
  return !feedersOf(graph, feeder).contains(other) ||
         graph.nodes.at(feeder).serial < graph.nodes.at(other).serial;
}

bool jackClientCounts(const Graph& graph, std::uint32_t nodeId) {
  return isJackClientOnSink(graph, nodeId) &&
         std::ranges::none_of(feedersOf(graph, nodeId), [&](std::uint32_t feederId) {
           const GraphNode* feeder = nodeOf(graph, feederId);
           if (feeder == nullptr || feederId == nodeId) {
             return false;
           }
           return isSink(*feeder) || isPlaybackStream(*feeder) ||
                  (isJackClientOnSink(graph, feederId) && comesFirst(graph, feederId, nodeId));
         });
}

bool isCopyOfOthers(const Graph& graph, std::uint32_t nodeId) {
  const std::string& group = property(graph.nodes.at(nodeId).properties, "node.link-group");
  if (group.empty()) {
    return false;
  }
  const auto isHeardOtherwise = [&](std::uint32_t feederId) {
    const GraphNode* feeder = nodeOf(graph, feederId);
    return feeder != nullptr && feederId != nodeId &&
           (isSink(*feeder) || isPlaybackStream(*feeder) || jackClientCounts(graph, feederId));
  };
  return std::ranges::any_of(graph.nodes, [&](const auto& entry) {
    const auto& [id, peer] = entry;
    return id != nodeId && property(peer.properties, "node.link-group") == group &&
           (isSink(peer) || std::ranges::any_of(feedersOf(graph, id), isHeardOtherwise));
  });
}

}  // namespace

bool isJackClient(const GraphNode& node) {
  return node.mediaClass.empty() && property(node.properties, "client.api") == "jack";
}

bool isPlayback(const Graph& graph, std::uint32_t nodeId) {
  const GraphNode* node = nodeOf(graph, nodeId);
  if (node == nullptr || !isJackClient(*node)) {
    return node != nullptr && isPlaybackStream(*node);
  }
  return std::ranges::any_of(graph.ports, [&](const auto& entry) {
    return entry.second.nodeId == nodeId && !entry.second.isInput;
  });
}

std::vector<const GraphPort*> sinkPortsOf(const Graph& graph, std::uint32_t outputPortId) {
  std::vector<const GraphPort*> sinkPorts;
  for (const auto& [id, link] : graph.links) {
    const auto port = graph.ports.find(link.inputPortId);
    const GraphNode* node = nodeOf(graph, link.inputNodeId);
    if (link.outputPortId == outputPortId && port != graph.ports.end() && node != nullptr &&
        isSink(*node)) {
      sinkPorts.push_back(&port->second);
    }
  }
  return sinkPorts;
}

bool countsForEverything(const Graph& graph, std::uint32_t nodeId) {
  return isPlaybackStream(graph.nodes.at(nodeId)) ? !isCopyOfOthers(graph, nodeId)
                                                  : jackClientCounts(graph, nodeId);
}

}  // namespace audrel::linuxos
