#pragma once

#include <sys/types.h>

#include <csignal>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Track.h"
#include "tests/support/ChildProcess.h"

namespace audrel::pwtest {

/// An application that plays: a process of its own. See PlayerMain.cpp.
class Player {
 public:
  struct Report {
    std::uint64_t playedFrames = 0;
    std::uint32_t graphRate = 0;  ///< last seen
    std::uint64_t shortestQuantum = 0;
    std::uint64_t longestQuantum = 0;
    std::vector<Stretch> stretches;
  };

  /// `properties` ("key=value") are what the application says of itself.
  explicit Player(const std::string& socketPath, std::vector<std::string> properties = {});

  bool isReady() const { return isReady_; }
  pid_t pid() const { return process_->pid(); }

  /// Plays stamped stereo at 48 kHz, 32-bit float.
  bool open(const std::string& name, std::uint32_t stampStream);
  /// `description` as in PlayerMain.cpp: source, format, channels, rate, properties.
  bool open(const std::string& name, const std::string& description);
  bool pause(const std::string& name) { return tell("pause " + name); }
  bool resume(const std::string& name) { return tell("resume " + name); }
  bool close(const std::string& name) { return tell("close " + name); }
  /// Connects to the server again, without streams.
  bool reconnect() { return tell("reconnect"); }
  Report report(const std::string& name);

  /// Waits until the stream has played `frames` more than it has when called.
  bool waitForMore(const std::string& name, std::uint64_t frames);

  /// Stops the process where it is. On return no thread of it runs.
  void hang();
  void goOn() { kill(pid(), SIGCONT); }

  /// Ends the process.
  void end(int signal) { process_->end(signal); }

 private:
  bool tell(const std::string& command);
  std::string ask(const std::string& command);

  std::unique_ptr<support::ChildProcess> process_;
  bool isReady_ = false;
};

}  // namespace audrel::pwtest
