#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/pipewire/Graph.h"

namespace audrel::linuxos {

/// Whose playback a stream is, as far as it can be trusted.
struct StreamOwner {
  std::string key;  ///< names the owner for good: its pid and start time, or its connection
  std::uint64_t connection = 0;  ///< the serial of its client, or of a stream without one
  pid_t pid = 0;                 ///< as declared when it could not be checked
  bool isPidVerified = false;
  std::string portalApplication;  ///< a broker's word for a sandboxed program; else empty
};

/// Whom a connection passes streams on for, which its own pid does not tell then.
enum class Broker {
  none,           ///< the connection is its process's own
  pulseServer,    ///< the audio server for PulseAudio clients: it passes on what a client declares
  sandboxPortal,  ///< opens connections for sandboxed programs, and names them
};

/// By the program that the connection's process runs, which the kernel tells: a client may declare
/// anything.
Broker brokerOf(const GraphClient* client);

/// `client` may be null when it is not known.
///
/// Without a broker the process is the one that the kernel gave the server. A declared pid may come
/// from another pid namespace or machine: it is believed of the PulseAudio server's clients alone,
/// when the process runs here and its program has the declared name.
StreamOwner ownerOf(const GraphNode& node, const GraphClient* client, Broker broker);

/// The key of a process of this machine; nothing when it does not run.
std::optional<std::string> keyOfProcess(pid_t pid);

/// Whether the owner can have no stream any more: its process, or its connection, has gone.
bool isGone(const StreamOwner& owner, const Graph& graph);

/// What the owner calls itself: the application's name, else its program's, else the stream's. A
/// client of the ALSA plugin is called as its program.
std::string ownName(const GraphNode& node, const GraphClient* client);

/// The `application.id` that the owner declares; empty when it declares none.
std::string ownIdentifier(const GraphNode& node, const GraphClient* client);

}  // namespace audrel::linuxos
