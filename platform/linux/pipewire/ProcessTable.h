#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/CoreAudio.h"
#include "platform/linux/pipewire/Graph.h"
#include "platform/linux/pipewire/StreamOwner.h"

namespace audrel::linuxos {

/// The process objects: every process that was ever seen to play has an object id that no other
/// will have. An id is a hash of what names the process for good, so that the next
/// run of the program gives a living process the same id; a collision moves on to a free one.
class ProcessTable {
 public:
  struct Process {
    CA::AudioObjectID id = 0;
    StreamOwner owner;
    std::string name;  ///< for the user; `shownName`s, both
    std::string bundleID;
  };

  /// Process objects keep out of this range of ids, which is for objects of other kinds.
  static constexpr CA::AudioObjectID reservedIDs = 0x10000;

  /// The object of the node's owner, made when it is new. The node and its client must be detailed.
  const Process& processOf(const GraphNode& node, const GraphClient* client);

  /// The processes that play now, be it silence, in the order of their oldest node that does.
  std::vector<const Process*> playing(const Graph& graph);

  const Process* find(CA::AudioObjectID id) const;

  /// Of several that had the pid one after the other, the one that runs.
  const Process* findPid(pid_t pid) const;

  /// Whether the process may still play: it runs, or one of its nodes is there.
  bool isAlive(const Process& process, const Graph& graph);

  /// Forgets, once it knows a hundred processes and each time their number has doubled, those that
  /// are gone and not needed. Their ids are not given again.
  void forgetGone(const Graph& graph, const std::function<bool(CA::AudioObjectID)>& isNeeded);

  std::size_t size() const { return processes_.size(); }

 private:
  static constexpr std::size_t many = 100;

  CA::AudioObjectID newID(const std::string& key) const;
  static void describe(Process& process, const GraphNode& node, const GraphClient* client);

  std::map<CA::AudioObjectID, Process> processes_;
  std::map<std::string, CA::AudioObjectID> idsByKey_;
  std::unordered_set<CA::AudioObjectID> givenIDs_;
  std::size_t toleratedSize_ = many;
};

/// The node's client; null when it is not known.
const GraphClient* clientOf(const Graph& graph, const GraphNode& node);

/// Whether everything about the node that its owner is found by has arrived.
bool isIdentified(const Graph& graph, const GraphNode& node);

}  // namespace audrel::linuxos
