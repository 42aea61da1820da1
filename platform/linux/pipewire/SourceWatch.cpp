#include "platform/linux/pipewire/SourceWatch.h"

#include <algorithm>

namespace audrel::linuxos {

std::optional<Notice> SourceWatch::look(const Graph& graph) {
  const ProcessTable::Process* process = processes_.find(process_);
  if (process == nullptr) {
    return std::nullopt;
  }
  if (state_ == State::plays && isGone(process->owner, graph)) {
    state_ = State::hasQuit;
    for (const ProcessTable::Process* other : processes_.playing(graph)) {
      others_.insert(other->id);
    }
    return Notice{
        .matter = "source",
        .summary = "Recording silence",
        .body = process->name + " has quit. The recording goes on in silence: you can stop it."};
  }
  const auto isItsNextRun = [&](const ProcessTable::Process* other) {
    return other != process && !others_.contains(other->id) && other->name == process->name &&
           other->bundleID == process->bundleID;
  };
  if (state_ == State::hasQuit && std::ranges::any_of(processes_.playing(graph), isItsNextRun)) {
    state_ = State::runsAgain;
    return Notice{.matter = "source",
                  .summary = "Still recording silence",
                  .body = process->name +
                          " runs again, but not in this recording: stop it and choose " +
                          process->name + " again."};
  }
  return std::nullopt;
}

}  // namespace audrel::linuxos
