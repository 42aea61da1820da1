#include "platform/linux/pipewire/ProcessTable.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "platform/linux/pipewire/DesktopEntries.h"
#include "platform/linux/pipewire/Playback.h"
#include "platform/linux/pipewire/ProcFiles.h"
#include "platform/linux/pipewire/ShownName.h"

namespace audrel::linuxos {

namespace {

/// FNV-1a, 32 bits: the offset basis and prime are those of its definition.
std::uint32_t hash(const std::string& text) {
  std::uint32_t value = 2166136261U;
  for (const char character : text) {
    value = (value ^ static_cast<std::uint8_t>(character)) * 16777619U;
  }
  return value;
}

/// By the scope that the desktop started the process in, else by its program.
std::optional<DesktopEntry> desktopEntryOfProcess(pid_t pid) {
  auto scope = desktopEntryById(proc::scopeApplication(pid));
  return scope && !isTerminal(*scope) ? std::move(scope)
                                      : desktopEntryOfExecutable(proc::executable(pid));
}

}  // namespace

const GraphClient* clientOf(const Graph& graph, const GraphNode& node) {
  const auto found = graph.clients.find(node.clientId);
  return found == graph.clients.end() ? nullptr : &found->second;
}

bool isIdentified(const Graph& graph, const GraphNode& node) {
  const GraphClient* client = clientOf(graph, node);
  return node.isDetailed && (client == nullptr || client->isDetailed);
}

CA::AudioObjectID ProcessTable::newID(const std::string& key) const {
  CA::AudioObjectID id = hash(key);
  while (id < reservedIDs || givenIDs_.contains(id)) {
    ++id;
  }
  return id;
}

const ProcessTable::Process& ProcessTable::processOf(const GraphNode& node,
                                                     const GraphClient* client) {
  StreamOwner owner = ownerOf(node, client, brokerOf(client));
  if (const auto known = idsByKey_.find(owner.key); known != idsByKey_.end()) {
    return processes_.at(known->second);
  }
  Process process;
  process.id = newID(owner.key);
  process.owner = std::move(owner);
  describe(process, node, client);
  idsByKey_[process.owner.key] = process.id;
  givenIDs_.insert(process.id);
  return processes_[process.id] = std::move(process);
}

/// What the system knows of a process comes before what the process says of itself.
void ProcessTable::describe(Process& process, const GraphNode& node, const GraphClient* client) {
  const StreamOwner& owner = process.owner;
  std::string id = owner.portalApplication;
  std::optional<DesktopEntry> entry;
  if (id.empty() && owner.isPidVerified) {
    id = proc::flatpakApplication(owner.pid);
    entry = id.empty() ? desktopEntryOfProcess(owner.pid) : std::nullopt;
  }
  if (id.empty()) {
    id = entry ? entry->id : ownIdentifier(node, client);
  }
  if (!entry) {
    entry = desktopEntryById(id);
  }
  process.bundleID = shownName(id);
  process.name = shownName(entry ? entry->name : ownName(node, client));
}

std::vector<const ProcessTable::Process*> ProcessTable::playing(const Graph& graph) {
  std::vector<const GraphNode*> streams;
  for (const auto& [id, node] : graph.nodes) {
    if (isPlayback(graph, id) && isIdentified(graph, node)) {
      streams.push_back(&node);
    }
  }
  std::ranges::sort(streams, {}, &GraphNode::serial);
  std::vector<const Process*> processes;
  std::set<CA::AudioObjectID> seen;
  for (const GraphNode* stream : streams) {
    const Process& process = processOf(*stream, clientOf(graph, *stream));
    if (seen.insert(process.id).second) {
      processes.push_back(&process);
    }
  }
  return processes;
}

const ProcessTable::Process* ProcessTable::find(CA::AudioObjectID id) const {
  const auto found = processes_.find(id);
  return found == processes_.end() ? nullptr : &found->second;
}

const ProcessTable::Process* ProcessTable::findPid(pid_t pid) const {
  const Process* result = nullptr;
  for (const auto& [id, process] : processes_) {
    if (process.owner.pid == pid && (result == nullptr || keyOfProcess(pid) == process.owner.key)) {
      result = &process;
    }
  }
  return result;
}

bool ProcessTable::isAlive(const Process& process, const Graph& graph) {
  if (process.owner.isPidVerified) {
    return keyOfProcess(process.owner.pid) == process.owner.key;
  }
  return std::ranges::count(playing(graph), &process) > 0;
}

void ProcessTable::forgetGone(const Graph& graph,
                              const std::function<bool(CA::AudioObjectID)>& isNeeded) {
  if (processes_.size() < toleratedSize_) {
    return;
  }
  std::erase_if(processes_, [&](const auto& entry) {
    return !isNeeded(entry.first) && isGone(entry.second.owner, graph);
  });
  std::erase_if(idsByKey_, [&](const auto& entry) { return !processes_.contains(entry.second); });
  toleratedSize_ = std::max(many, 2 * processes_.size());
}

}  // namespace audrel::linuxos
