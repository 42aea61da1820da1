#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::pwtest {

/// What a desktop session runs for sound, as packaged and configured there, but for one sink that
/// is heard nowhere: PipeWire, WirePlumber, the server for PulseAudio clients, and a session bus,
/// all in a folder of their own. Made on the main thread.
class DesktopServer {
 public:
  DesktopServer();

  /// Whether everything answers, and a player is heard by the sink.
  bool isRunning() const { return isRunning_; }

  std::string socketPath() const { return (run() / "pipewire-0").string(); }
  const std::filesystem::path& folder() const { return folder_.path(); }

  /// Starts a program as one of this session's.
  std::unique_ptr<support::ChildProcess> start(std::vector<std::string> arguments) const;

 private:
  std::filesystem::path run() const { return folder_.path() / "run"; }
  void makeFolders() const;
  bool startAll();
  bool startServer(std::vector<std::string> arguments, const std::filesystem::path& socket);
  bool waitUntilItPlays() const;

  support::TemporaryFolder folder_;
  std::vector<std::unique_ptr<support::ChildProcess>> servers_;
  bool isRunning_ = false;
};

}  // namespace audrel::pwtest
