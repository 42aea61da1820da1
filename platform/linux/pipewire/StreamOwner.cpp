#include "platform/linux/pipewire/StreamOwner.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "platform/linux/pipewire/ProcFiles.h"
#include "platform/linux/pipewire/ShownName.h"

namespace audrel::linuxos {

namespace {

pid_t asPid(const std::string& text) {
  pid_t pid = 0;
  std::from_chars(text.data(), text.data() + text.size(), pid);
  return pid;
}

/// The stream's own word, else its client's.
const std::string& declared(const GraphNode& node, const GraphClient* client,
                            std::string_view key) {
  const std::string& own = property(node.properties, key);
  return own.empty() && client != nullptr ? property(client->properties, key) : own;
}

bool isOfThisMachine(const GraphNode& node, const GraphClient* client) {
  const std::string& machine = declared(node, client, "application.process.machine-id");
  return machine.empty() || machine == proc::machineId();
}

bool runsDeclaredProgram(pid_t pid, const std::string& binary) {
  return !binary.empty() && (std::filesystem::path(proc::executable(pid)).filename() == binary ||
                             proc::commandName(pid) == binary.substr(0, 15));
}

pid_t pidOfConnection(const GraphClient* client) {
  return client != nullptr ? asPid(property(client->properties, "pipewire.sec.pid")) : 0;
}

/// What is declared tells apart the programs behind one connection.
std::string connectionKey(const StreamOwner& owner, const GraphNode& node,
                          const GraphClient* client) {
  return "connection " + std::to_string(owner.connection) + " " +
         shownName(owner.portalApplication + " " +
                   declared(node, client, "application.process.machine-id") + " " +
                   declared(node, client, "application.process.id"));
}

/// Whether the pid that the stream declares to the PulseAudio server can be true.
bool isCredible(pid_t declaredPid, const GraphNode& node, const GraphClient* client) {
  return isOfThisMachine(node, client) &&
         runsDeclaredProgram(declaredPid, declared(node, client, "application.process.binary"));
}

}  // namespace

std::optional<std::string> keyOfProcess(pid_t pid) {
  const auto started = proc::startTime(pid);
  if (pid < 1 || !started) {
    return std::nullopt;
  }
  return "process " + std::to_string(pid) + " " + std::to_string(*started);
}

Broker brokerOf(const GraphClient* client) {
  const pid_t pid = pidOfConnection(client);
  // The server is one program under two names.
  if (proc::runsSystemProgram(pid, "pipewire") || proc::runsSystemProgram(pid, "pipewire-pulse")) {
    return Broker::pulseServer;
  }
  return proc::runsSystemProgram(pid, "xdg-desktop-portal") ? Broker::sandboxPortal : Broker::none;
}

StreamOwner ownerOf(const GraphNode& node, const GraphClient* client, Broker broker) {
  StreamOwner owner;
  owner.connection = client != nullptr ? client->serial : node.serial;
  owner.pid = pidOfConnection(client);
  bool mayTrust = broker == Broker::none;
  if (broker != Broker::none) {
    owner.portalApplication = property(client->properties, "pipewire.access.portal.app_id");
    const pid_t declaredPid = asPid(declared(node, client, "application.process.id"));
    mayTrust = broker == Broker::pulseServer && owner.portalApplication.empty() &&
               isCredible(declaredPid, node, client);
    owner.pid = declaredPid > 0 ? declaredPid : owner.pid;
  }
  const auto key = mayTrust ? keyOfProcess(owner.pid) : std::nullopt;
  owner.isPidVerified = key.has_value();
  owner.key = key ? *key : connectionKey(owner, node, client);
  return owner;
}

bool isGone(const StreamOwner& owner, const Graph& graph) {
  if (owner.isPidVerified) {
    return keyOfProcess(owner.pid) != owner.key;
  }
  const auto isIt = [&](const auto& entry) { return entry.second.serial == owner.connection; };
  return std::ranges::none_of(graph.clients, isIt) && std::ranges::none_of(graph.nodes, isIt);
}

std::string ownName(const GraphNode& node, const GraphClient* client) {
  // The plugin for ALSA's programs gives each of them a name of its own making.
  const bool isNamedByPlugin = declared(node, client, "client.api") == "alsa";
  const std::string& binary = declared(node, client, "application.process.binary");
  if (isNamedByPlugin && !binary.empty()) {
    return binary;
  }
  for (const char* key : {"application.name", "application.process.binary", "media.name"}) {
    if (const std::string& name = declared(node, client, key); !name.empty()) {
      return name;
    }
  }
  return node.name;
}

std::string ownIdentifier(const GraphNode& node, const GraphClient* client) {
  return declared(node, client, "application.id");
}

}  // namespace audrel::linuxos
