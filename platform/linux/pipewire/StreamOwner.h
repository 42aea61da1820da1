#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "platform/linux/pipewire/Graph.h"

namespace audrel::linuxos {

/// Whose playback a stream is, as far as it can be trusted.
struct StreamOwner {
  std::string key;  ///< names the owner for good: its pid and start time, or its connection
  pid_t pid = 0;    ///< as declared when it could not be checked
  bool isPidVerified = false;
  std::string portalApplication;  ///< the sandbox portal's word; empty for others
};

/// `client` may be null when it is not known.
///
/// A native client's pid is the one that the kernel gave the server. The audio server for
/// PulseAudio clients passes on what a client declares, which may come from another pid namespace
/// or machine: that is believed when the process runs here and its program has the declared name.
/// A connection opened by the sandbox portal bears the portal's own pid.
StreamOwner ownerOf(const GraphNode& node, const GraphClient* client);

/// The key of a process of this machine; nothing when it does not run.
std::optional<std::string> keyOfProcess(pid_t pid);

/// What the owner calls itself: the application's name, else its program's, else the stream's.
std::string ownName(const GraphNode& node, const GraphClient* client);

/// The `application.id` that the owner declares; empty when it declares none.
std::string ownIdentifier(const GraphNode& node, const GraphClient* client);

}  // namespace audrel::linuxos
