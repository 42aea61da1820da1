#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/HeldTime.h"
#include "tests/platform/linux/pipewire/harness/SessionManager.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::pwtest {

struct Sink {
  std::string name;
  std::string channels = "FL,FR";
};

/// How many links carry audio from one node to another: {{"music -> speakers", 2}}.
using Links = std::map<std::string, int>;

/// Those of stereo streams that each play to all of the destinations.
Links stereoLinks(const std::vector<std::string>& streams,
                  const std::vector<std::string>& destinations);

/// Those of stereo streams that are heard at the speakers and by a tap each.
Links heard(const std::vector<std::string>& streams);

struct ServerOptions {
  /// The multiple of real time at which a `PacedDriver` drives the graph, which loses no cycle
  /// then; 0 for a graph that stands still until the test steps it; nothing for an unmodified
  /// server whose graph runs in real time.
  std::optional<double> timesRealTime = 0;
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

  /// Makes so many cycles, and lets the time pass that they take. Before that it waits until
  /// exactly these links carry audio and every client knows it.
  testing::AssertionResult step(int cycles, const Links& links);

  /// Begins a cycle and waits for nobody, as a sound card's does. Whether it could.
  bool begin() { return makeCycle("begin"); }

  /// Lets time pass in which the graph stands still.
  void pass(std::chrono::nanoseconds duration) { time_->pass(duration); }

  /// What its recorders go by, if it is stepped.
  std::shared_ptr<HeldTime> time() const { return time_; }

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
  std::string ask(const std::string& command);
  bool makeCycle(const std::string& command);
  bool launch();

  ServerOptions options_;
  std::shared_ptr<HeldTime> time_ = std::make_shared<HeldTime>();
  support::TemporaryFolder folder_;
  std::unique_ptr<support::ChildProcess> server_;
  std::unique_ptr<SessionManager> session_;
};

}  // namespace audrel::pwtest
