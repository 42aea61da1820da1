#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace audrel::pwtest {

/// A client of JACK on a PipeWire server: a process of its own. See JackPlayerMain.cpp.
class JackPlayer {
 public:
  struct Report {
    std::uint64_t playedFrames = 0;
    std::uint32_t shortestQuantum = 0;
    std::uint32_t longestQuantum = 0;
  };

  /// `options` as in JackPlayerMain.cpp.
  JackPlayer(const std::string& socketPath, const std::string& name,
             const std::vector<std::string>& options);

  bool isReady() const { return isReady_; }
  pid_t pid() const { return process_->pid(); }

  /// Ports are named as JACK does: "speakers:playback_FL".
  bool connect(const std::string& output, const std::string& input);
  bool disconnect(const std::string& output, const std::string& input);

  /// The first output to the left speaker, the second to the right one; and back.
  bool connectToSpeakers();
  bool disconnectFromSpeakers();

  /// What JACK says that a port of the client is connected to, in the order of names.
  std::vector<std::string> connections(const std::string& port);

  /// How many frames JACK says that there are from an output to the speakers, at least and at most.
  std::pair<std::uint32_t, std::uint32_t> playbackLatency(const std::string& port);

  Report report();

  void end(int signal) { process_->end(signal); }

 private:
  std::string ask(const std::string& command);

  std::string name_;
  std::unique_ptr<support::ChildProcess> process_;
  bool isReady_ = false;
};

/// Starts a program as a client of JACK on the server.
std::unique_ptr<support::ChildProcess> startJackProgram(const std::string& socketPath,
                                                        std::vector<std::string> arguments);

}  // namespace audrel::pwtest
