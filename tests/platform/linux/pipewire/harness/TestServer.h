#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/SessionManager.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::pwtest {

struct Sink {
  std::string name;
  std::string channels = "FL,FR";
};

struct ServerOptions {
  /// The multiple of real time at which a `PacedDriver` drives the graph, which loses no cycle
  /// then; nothing for an unmodified server whose graph runs in real time.
  std::optional<double> timesRealTime = 20;
  std::uint32_t rate = 48000;
  std::string allowedRates = "48000";
  std::uint32_t quantum = 1024;
  std::vector<Sink> sinks = {{"speakers"}};
  bool hasDriver = true;  ///< without one, and without sinks, no stream ever runs
  PortLayout portLayout = PortLayout::ofSink;
};

/// An audio server of the test's own, with its session manager. Made and used on the main thread.
class TestServer {
 public:
  explicit TestServer(ServerOptions options = {});
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  /// Whether everything runs; the first thing that a test asserts.
  bool isRunning() const { return session_ && session_->isConnected(); }

  std::string socketPath() const { return (folder_.path() / "pipewire-0").string(); }
  SessionManager& session() { return *session_; }

  /// Ends the server without notice.
  void crash();

  /// Starts it again, at the same socket.
  void restart();

  /// Stops it where it is: its socket stays, and nobody answers.
  void hang();
  void goOn();

 private:
  std::string configuration() const;
  bool launch();

  ServerOptions options_;
  support::TemporaryFolder folder_;
  std::unique_ptr<support::ChildProcess> server_;
  std::unique_ptr<SessionManager> session_;
};

}  // namespace audrel::pwtest
