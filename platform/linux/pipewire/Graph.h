#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace audrel::linuxos {

using Properties = std::map<std::string, std::string, std::less<>>;

/// The text under `key`, empty when there is none.
const std::string& property(const Properties& properties, std::string_view key);

inline constexpr std::uint32_t unknownGlobal = UINT32_MAX;

struct GraphNode {
  std::uint64_t serial = 0;  ///< never repeats in the life of a server, unlike ids
  std::uint32_t clientId = unknownGlobal;
  std::string mediaClass;
  std::string name;
  std::int32_t sessionPriority = 0;
  Properties properties;                  ///< the node's own, once they were asked for
  bool isDetailed = false;                ///< whether they have arrived
  bool isRunning = false;                 ///< takes part in the graph's cycles
  std::optional<std::uint32_t> channels;  ///< of the stream's own format, before any upmix
};

/// One that carries audio.
struct GraphPort {
  std::uint32_t nodeId = unknownGlobal;
  bool isInput = false;
  bool isMonitor = false;
  std::string channel;      ///< "FL", "MONO", ...; empty for a JACK client's
  std::uint32_t index = 0;  ///< among those of its direction that the node has
};

struct GraphClient {
  std::uint64_t serial = 0;
  Properties properties;
  bool isDetailed = false;
};

struct GraphLink {
  std::uint32_t outputNodeId = unknownGlobal;
  std::uint32_t outputPortId = unknownGlobal;
  std::uint32_t inputNodeId = unknownGlobal;
  std::uint32_t inputPortId = unknownGlobal;
};

/// What is known of a server's objects, by their (recycled) ids.
struct Graph {
  std::map<std::uint32_t, GraphNode> nodes;
  std::map<std::uint32_t, GraphPort> ports;
  std::map<std::uint32_t, GraphClient> clients;
  std::map<std::uint32_t, GraphLink> links;
  std::uint32_t linkFactoryId = unknownGlobal;  ///< what makes links, where we may make any
  std::string configuredDefaultSink;            ///< a node name; empty when nobody set one
  std::uint32_t clockRate = 48000;  ///< frames per second, unless another rate is forced
  std::uint32_t forcedRate = 0;     ///< 0 while none is
};

/// Frames per second of the graph.
std::uint32_t rateOf(const Graph& graph);

/// Whether the node is an application's playback stream.
bool isPlaybackStream(const GraphNode& node);

/// The sink that new streams go to: the configured one if it exists, else the sink of the highest
/// session priority (the oldest of several); nothing when there is no sink.
const GraphNode* defaultSink(const Graph& graph);

}  // namespace audrel::linuxos
