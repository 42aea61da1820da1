#include "platform/linux/pipewire/Graph.h"

#include <algorithm>

namespace audrel::linuxos {

namespace {

bool isSinkOrStreamClass(const GraphNode& node) {
  return node.mediaClass == "Audio/Sink" || node.mediaClass == "Audio/Duplex" ||
         node.mediaClass == "Stream/Output/Audio";
}

bool isFedBySinkOrStream(const Graph& graph, std::uint32_t nodeId) {
  return std::ranges::any_of(graph.links, [&](const auto& entry) {
    const GraphLink& link = entry.second;
    if (link.inputNodeId != nodeId) {
      return false;
    }
    const auto feeder = graph.nodes.find(link.outputNodeId);
    return feeder != graph.nodes.end() && isSinkOrStreamClass(feeder->second);
  });
}

}  // namespace

const std::string& property(const Properties& properties, std::string_view key) {
  static const std::string none;
  const auto found = properties.find(key);
  return found == properties.end() ? none : found->second;
}

std::uint32_t rateOf(const Graph& graph) {
  return graph.forcedRate > 0 ? graph.forcedRate : graph.clockRate;
}

bool isPlaybackStream(const GraphNode& node) {
  return node.mediaClass == "Stream/Output/Audio";
}

bool isCopyOfOtherStreams(const Graph& graph, const GraphNode& node) {
  const std::string& group = property(node.properties, "node.link-group");
  if (group.empty()) {
    return false;
  }
  return std::ranges::any_of(graph.nodes, [&](const auto& entry) {
    const auto& [id, peer] = entry;
    if (&peer == &node || property(peer.properties, "node.link-group") != group) {
      return false;
    }
    return peer.mediaClass == "Audio/Sink" || peer.mediaClass == "Audio/Duplex" ||
           isFedBySinkOrStream(graph, id);
  });
}

const GraphNode* defaultSink(const Graph& graph) {
  const GraphNode* best = nullptr;
  for (const auto& [id, node] : graph.nodes) {
    if (node.mediaClass != "Audio/Sink") {
      continue;
    }
    if (node.name == graph.configuredDefaultSink) {
      return &node;
    }
    if (best == nullptr || node.sessionPriority > best->sessionPriority ||
        (node.sessionPriority == best->sessionPriority && node.serial < best->serial)) {
      best = &node;
    }
  }
  return best;
}

}  // namespace audrel::linuxos
