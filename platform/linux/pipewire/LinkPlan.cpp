#include "platform/linux/pipewire/LinkPlan.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "platform/linux/pipewire/Playback.h"

namespace audrel::linuxos {

namespace {

struct OutputPort {
  std::uint32_t id;
  std::string channel;
  std::uint32_t index;
};

using InputPorts = std::map<std::string, std::uint32_t>;  ///< by their channels

InputPorts inputPortsByChannel(const Graph& graph, std::uint32_t nodeId) {
  InputPorts inputs;
  for (const auto& [id, port] : graph.ports) {
    if (port.nodeId == nodeId && port.isInput && !port.isMonitor) {
      inputs[port.channel] = id;
    }
  }
  return inputs;
}

/// In the node's order.
std::vector<OutputPort> outputPorts(const Graph& graph, std::uint32_t nodeId) {
  std::vector<OutputPort> outputs;
  for (const auto& [id, port] : graph.ports) {
    if (port.nodeId == nodeId && !port.isInput && !port.isMonitor) {
      outputs.push_back({id, port.channel, port.index});
    }
  }
  std::ranges::sort(outputs, {}, &OutputPort::index);
  return outputs;
}

bool hasChannel(const std::vector<OutputPort>& ports, const char* channel) {
  return std::ranges::any_of(ports,
                             [&](const OutputPort& port) { return port.channel == channel; });
}

/// The channels of the tap that a channel goes to.
std::vector<std::string> destinations(const std::string& channel, const InputPorts& inputs) {
  if (inputs.contains(channel)) {
    return {channel};
  }
  if (channel == "AUX0") {
    return {"FL"};
  }
  if (channel == "AUX1") {
    return {"FR"};
  }
  if (channel == "MONO" || channel == "UNK" || channel.empty()) {
    return {"FL", "FR"};
  }
  return {};
}

class Planner {
 public:
  Planner(const Graph& graph, std::uint32_t tapNodeId)
      : graph_(graph), inputs_(inputPortsByChannel(graph, tapNodeId)) {}

  void addStream(const GraphNode& node, const std::vector<OutputPort>& outputs) {
    const bool hasFrontPair = hasChannel(outputs, "FL") && hasChannel(outputs, "FR");
    const bool frontPairOnly = hasFrontPair && node.channels.value_or(2) <= 2;
    for (const OutputPort& port : outputs) {
      if (!frontPairOnly || port.channel == "FL" || port.channel == "FR") {
        link(port, destinations(port.channel, inputs_));
      }
    }
  }

  void addJackClient(TappedPorts tapped, const std::vector<OutputPort>& outputs) {
    bool isLeft = true;
    for (const OutputPort& port : outputs) {
      const auto sinkPorts = sinkPortsOf(graph_, port.id);
      std::vector<std::string> channels;
      for (const GraphPort* sinkPort : sinkPorts) {
        std::ranges::copy(destinations(sinkPort->channel, inputs_), std::back_inserter(channels));
      }
      if (channels.empty() && (tapped == TappedPorts::all || !sinkPorts.empty())) {
        channels = outputs.size() == 1 ? std::vector<std::string>{"FL", "FR"}
                                       : std::vector<std::string>{isLeft ? "FL" : "FR"};
      }
      link(port, channels);
      isLeft = !isLeft;
    }
  }

  const std::set<PortPair>& plan() const { return plan_; }

 private:
  void link(const OutputPort& port, const std::vector<std::string>& channels) {
    for (const std::string& channel : channels) {
      if (const auto input = inputs_.find(channel); input != inputs_.end()) {
        plan_.insert({port.id, input->second});
      }
    }
  }

  const Graph& graph_;
  InputPorts inputs_;
  std::set<PortPair> plan_;
};

}  // namespace

std::set<PortPair> planLinks(const Graph& graph, std::uint32_t tapNodeId,
                             const TappedPortsOf& tappedPortsOf) {
  Planner planner(graph, tapNodeId);
  for (const auto& [nodeId, node] : graph.nodes) {
    const TappedPorts tapped = nodeId == tapNodeId ? TappedPorts::none : tappedPortsOf(nodeId);
    if (tapped == TappedPorts::none) {
      continue;
    }
    const auto outputs = outputPorts(graph, nodeId);
    if (isJackClient(node)) {
      planner.addJackClient(tapped, outputs);
    } else {
      planner.addStream(node, outputs);
    }
  }
  return planner.plan();
}

}  // namespace audrel::linuxos
