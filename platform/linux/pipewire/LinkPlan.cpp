#include "platform/linux/pipewire/LinkPlan.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace audrel::linuxos {

namespace {

struct OutputPort {
  std::uint32_t id;
  std::string channel;
};

std::map<std::string, std::uint32_t> inputPortsByChannel(const Graph& graph, std::uint32_t nodeId) {
  std::map<std::string, std::uint32_t> inputs;
  for (const auto& [id, port] : graph.ports) {
    if (port.nodeId == nodeId && port.isInput && !port.isMonitor) {
      inputs[port.channel] = id;
    }
  }
  return inputs;
}

std::vector<OutputPort> outputPorts(const Graph& graph, std::uint32_t nodeId) {
  std::vector<OutputPort> outputs;
  for (const auto& [id, port] : graph.ports) {
    if (port.nodeId == nodeId && !port.isInput && !port.isMonitor) {
      outputs.push_back({id, port.channel});
    }
  }
  return outputs;
}

bool hasChannel(const std::vector<OutputPort>& ports, const char* channel) {
  return std::ranges::any_of(ports,
                             [&](const OutputPort& port) { return port.channel == channel; });
}

/// The channels of the tap that a port of the stream goes to.
std::vector<std::string> destinations(const OutputPort& port, bool frontPairOnly,
                                      const std::map<std::string, std::uint32_t>& inputs) {
  if (frontPairOnly) {
    if (port.channel == "FL" || port.channel == "FR") {
      return {port.channel};
    }
    return {};
  }
  if (inputs.contains(port.channel)) {
    return {port.channel};
  }
  if (port.channel == "AUX0") {
    return {"FL"};
  }
  if (port.channel == "AUX1") {
    return {"FR"};
  }
  if (port.channel == "MONO" || port.channel == "UNK" || port.channel.empty()) {
    return {"FL", "FR"};
  }
  return {};
}

}  // namespace

std::set<PortPair> planLinks(const Graph& graph, std::uint32_t tapNodeId,
                             const std::function<bool(const GraphNode&)>& isTapped) {
  const auto inputs = inputPortsByChannel(graph, tapNodeId);
  std::set<PortPair> plan;
  for (const auto& [nodeId, node] : graph.nodes) {
    if (nodeId == tapNodeId || !isTapped(node)) {
      continue;
    }
    const auto outputs = outputPorts(graph, nodeId);
    const bool hasFrontPair = hasChannel(outputs, "FL") && hasChannel(outputs, "FR");
    const bool frontPairOnly = hasFrontPair && node.channels.value_or(2) <= 2;
    for (const OutputPort& port : outputs) {
      for (const std::string& channel : destinations(port, frontPairOnly, inputs)) {
        if (const auto input = inputs.find(channel); input != inputs.end()) {
          plan.insert({port.id, input->second});
        }
      }
    }
  }
  return plan;
}

}  // namespace audrel::linuxos
