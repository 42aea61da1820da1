#pragma once

#include <optional>
#include <set>

#include "platform/CoreAudio.h"
#include "platform/linux/pipewire/Graph.h"
#include "platform/linux/pipewire/ProcessTable.h"
#include "platform/linux/system/Notice.h"

namespace audrel::linuxos {

/// Notices that the process which a recording is of has quit, and that its program was started
/// again, which the recording does not have. A run that played beside it is no next one. On the
/// connection's thread or under its lock.
class SourceWatch {
 public:
  /// The table must outlive it.
  SourceWatch(ProcessTable& processes, CA::AudioObjectID process)
      : processes_(processes), process_(process) {}

  /// What the user is to learn now; each of the two once.
  std::optional<Notice> look(const Graph& graph);

 private:
  enum class State { plays, hasQuit, runsAgain };

  ProcessTable& processes_;
  CA::AudioObjectID process_;
  State state_ = State::plays;
  std::set<CA::AudioObjectID> others_;  ///< that played when it had quit
};

}  // namespace audrel::linuxos
