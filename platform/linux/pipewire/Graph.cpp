#include "platform/linux/pipewire/Graph.h"

namespace audrel::linuxos {

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
