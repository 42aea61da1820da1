#pragma once

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <functional>
#include <map>
#include <memory>
#include <string_view>

#include "platform/linux/pipewire/Graph.h"
#include "platform/linux/pipewire/Handles.h"

namespace audrel::linuxos {

/// Keeps a `Graph` in step with a server: what its registry announces always, what only an object
/// itself tells (properties, stream formats) while somebody needs it, since every bound object
/// sends updates all the time. On the loop's thread, or under its lock.
class GraphMirror {
 public:
  /// `changed` is called after every change, on the loop's thread.
  GraphMirror(pw_core* core, std::function<void()> changed);
  ~GraphMirror();
  GraphMirror(const GraphMirror&) = delete;
  GraphMirror& operator=(const GraphMirror&) = delete;

  const Graph& graph() const { return graph_; }

  /// From now on the details of nodes and clients are asked for and followed, or no longer.
  /// Details that have arrived are kept.
  void followDetails(bool follow);

 private:
  struct Bound;

  void added(std::uint32_t id, const char* type, const spa_dict* announced);
  void removed(std::uint32_t id);
  void addNode(std::uint32_t id, const spa_dict* announced);
  void addPort(std::uint32_t id, const spa_dict* announced);
  void addMetadata(std::uint32_t id, const spa_dict* announced);
  void followNode(std::uint32_t id);
  void followClient(std::uint32_t id);
  void nodeInfo(std::uint32_t id, const pw_node_info* info);
  void nodeFormat(std::uint32_t id, const spa_pod* format);
  void clientInfo(std::uint32_t id, const pw_client_info* info);
  void defaultChanged(std::string_view key, const char* value);
  void settingChanged(std::string_view key, const char* value);

  static const pw_registry_events registryEvents;
  static const pw_node_events nodeEvents;
  static const pw_client_events clientEvents;
  static const pw_metadata_events defaultsEvents;
  static const pw_metadata_events settingsEvents;

  std::function<void()> changed_;
  Graph graph_;
  bool isFollowing_ = false;
  pw_registry* registry_;
  Hook registryHook_;
  std::map<std::uint32_t, std::unique_ptr<Bound>> details_;
  std::map<std::uint32_t, std::unique_ptr<Bound>> metadata_;
};

}  // namespace audrel::linuxos
