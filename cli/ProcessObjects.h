#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "model/RecordingSource.h"
#include "platform/Diagnostics.h"
#include "platform/Platform.h"

namespace audrel::cli {

/// A process that can be recorded.
struct Recordable {
  RecordingSource::Process process;
  pid_t pid = 0;                                   ///< 0 when the process went away in between
  std::optional<capture::Playback> playback = {};  ///< nothing where the system does not tell

  bool operator==(const Recordable&) const = default;
};

/// The processes that the program offers, in the order in which it lists them: of several with one
/// bundle identifier the first.
std::vector<Recordable> listedProcesses(const Platform& platform);

/// Every process that the hardware layer knows, those included that share a bundle identifier or
/// have no name of their own ("Process 4321" then), in the hardware layer's order.
std::vector<Recordable> allProcesses(const Platform& platform);

/// One line each of object id, pid, name, bundle identifier and what it plays, in columns under a
/// heading, safe for a terminal. In a window of `width` columns the texts are cut to fit, which
/// ends them in "…".
std::string tableOf(const std::vector<Recordable>& processes, std::optional<int> width);

/// An array of objects, one a line, with "id", "pid", "name", "bundleIdentifier", "playing" and
/// "title"; null for what is not known.
std::string jsonOf(const std::vector<Recordable>& processes);

}  // namespace audrel::cli
