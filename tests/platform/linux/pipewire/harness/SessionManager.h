#pragma once

#include <pipewire/extensions/metadata.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Client.h"

namespace audrel::pwtest {

/// What a session manager gives a playback stream for ports.
enum class PortLayout {
  ofSink,    ///< the sink's channels: the stream up- or downmixes itself
  ofStream,  ///< the stream's own channels
};

/// As much of a session manager as the tests need: it gives nodes ports and links playback streams
/// to the sink they ask for, or to the default one, and links them again when that changes. It
/// links capture streams to the source that they ask for, and the default sink to a `SinkMonitor`.
/// It also answers what a test asks about the graph. All calls on the main thread.
class SessionManager {
 public:
  SessionManager(const std::string& socketPath, PortLayout layout);
  ~SessionManager();
  SessionManager(const SessionManager&) = delete;
  SessionManager& operator=(const SessionManager&) = delete;

  /// Whether the server answers.
  bool isConnected() const { return client_.isConnected(); }

  void setDefaultSink(const std::string& nodeName);

  /// A setting of the server's graph: `clock.force-quantum`, `clock.force-rate`. The server has it
  /// then.
  void setClock(const std::string& key, std::uint32_t value, std::uint32_t subject = 0);

  /// The links of a node's outputs, each as "FL -> sink:FL", without those to `ignored` nodes.
  std::set<std::string> linksFrom(const std::string& nodeName, const std::string& ignored = {});

  /// How many links carry audio from one node to another: {{"music -> speakers", 2}}.
  std::map<std::string, int> activeLinks();

  /// The properties of a node that say how loud it is, as a text to compare; empty when there is
  /// no such node.
  std::string volumeOf(const std::string& nodeName);

  bool hasNode(const std::string& nodeName);

  /// Whether it has ports that a stream can be linked to.
  bool hasInputs(const std::string& nodeName);

  /// Takes a node away from whoever made it, as a user with the server's tools can.
  void destroyNode(const std::string& nodeName);

  /// Waits until `condition` holds, which is called under the lock after each change.
  bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout);

 private:
  struct Node;
  struct Port {
    std::uint32_t node = 0;
    bool isInput = false;
    bool isMonitor = false;
    std::string channel;
  };
  struct Link;
  using PortPair = std::pair<std::uint32_t, std::uint32_t>;

  void added(std::uint32_t id, const std::string& type, const spa_dict* properties);
  void addNode(std::uint32_t id, const spa_dict* properties);
  void addMetadata(std::uint32_t id, const spa_dict* properties);
  void removed(std::uint32_t id);
  void noteChange();
  void settle();
  void givePorts(Node& node);
  bool areToBeLinked(const Port& output, const Port& input) const;
  std::set<PortPair> wantedLinks() const;
  const Node* sinkFor(const Node& stream) const;
  std::vector<std::string> inputChannels(std::uint32_t node) const;
  const Node* nodeNamed(const std::string& name) const;
  void destroyLink(const PortPair& ports);

  static const pw_registry_events registryEvents;
  static const pw_node_events nodeEvents;
  static const pw_link_events linkEvents;

  Client client_;
  PortLayout layout_;
  std::string defaultSink_;
  spa_source* settleEvent_ = nullptr;
  pw_registry* registry_ = nullptr;
  spa_hook registryHook_{};
  pw_metadata* defaults_ = nullptr;
  pw_metadata* settings_ = nullptr;
  std::map<std::uint32_t, std::unique_ptr<Node>> nodes_;
  std::map<std::uint32_t, Port> ports_;
  std::map<std::uint32_t, std::unique_ptr<Link>> links_;
  std::map<PortPair, pw_proxy*> ownLinks_;
};

}  // namespace audrel::pwtest
