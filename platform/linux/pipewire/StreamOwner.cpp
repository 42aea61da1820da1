#include "platform/linux/pipewire/StreamOwner.h"

#include <charconv>
#include <filesystem>

#include "platform/linux/pipewire/ProcFiles.h"

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
  return std::filesystem::path(proc::executable(pid)).filename() == binary ||
         (!binary.empty() && proc::commandName(pid) == binary.substr(0, 15));
}

std::string connectionKey(const GraphNode& node, const GraphClient* client,
                          const std::string& application) {
  const std::uint64_t serial = client != nullptr ? client->serial : node.serial;
  return "connection " + std::to_string(serial) + " " + application + " " +
         declared(node, client, "application.process.machine-id") + " " +
         declared(node, client, "application.process.id");
}

bool isPulseClient(const GraphNode& node, const GraphClient* client) {
  return declared(node, client, "client.api") == "pipewire-pulse";
}

}  // namespace

std::optional<std::string> keyOfProcess(pid_t pid) {
  const auto started = proc::startTime(pid);
  if (pid < 1 || !started) {
    return std::nullopt;
  }
  return "process " + std::to_string(pid) + " " + std::to_string(*started);
}

StreamOwner ownerOf(const GraphNode& node, const GraphClient* client) {
  StreamOwner owner;
  owner.portalApplication = declared(node, client, "pipewire.access.portal.app_id");
  const pid_t declaredPid = asPid(declared(node, client, "application.process.id"));
  const pid_t kernelPid =
      client != nullptr ? asPid(property(client->properties, "pipewire.sec.pid")) : 0;
  const bool isPulse = isPulseClient(node, client);
  owner.pid = isPulse || !owner.portalApplication.empty() ? declaredPid : kernelPid;
  if (owner.pid < 1) {
    owner.pid = kernelPid;
  }
  const bool mayTrust =
      isPulse ? isOfThisMachine(node, client) &&
                    runsDeclaredProgram(declaredPid,
                                        declared(node, client, "application.process.binary"))
              : owner.portalApplication.empty();
  const auto key = mayTrust ? keyOfProcess(owner.pid) : std::nullopt;
  owner.isPidVerified = key.has_value();
  owner.key = key ? *key : connectionKey(node, client, owner.portalApplication);
  return owner;
}

std::string ownName(const GraphNode& node, const GraphClient* client) {
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
