#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "platform/CoreAudio.h"
#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/SampleStore.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"

namespace audrel::pwtest {

/// Tells how much audio there was at 48 kHz since it was made.
class Stopwatch {
 public:
  double frames() const {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
    return 48000 * elapsed.count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Music that an application plays to an unmodified server in real time, and a recorder.
class RealTime : public testing::Test {
 protected:
  explicit RealTime(std::vector<Sink> sinks = {{"speakers"}})
      : server({.timesRealTime = std::nullopt, .sinks = std::move(sinks)}) {}

  void SetUp() override {
    ASSERT_TRUE(server.isRunning());
    ASSERT_TRUE(player.open("music", 1));
    process = recorder.waitForProcess(player.pid());
    ASSERT_NE(process, 0U);
  }

  /// `call` is one of the recorder's.
  void start(const std::function<CA::OSStatus()>& call) {
    sinceCall_.emplace();
    const CA::OSStatus status = call();
    sinceReturn_.emplace();
    ASSERT_EQ(status, 0);
  }

  /// Stops, and holds the recording's length against the clock, but for `extraFrames` that it may
  /// have besides. A busy machine may take its time for any call, so it is at least as long as from
  /// the start's return to the stop's call, and at most as long as from the start's call to the
  /// stop's return.
  Audio stop(double extraFrames = 0) {
    constexpr double cycles = 4096;
    const double shortest = sinceReturn_->frames() - cycles;
    EXPECT_EQ(recorder.stop(), 0);
    const double longest = sinceCall_->frames() + cycles + extraFrames;
    EXPECT_FALSE(recorder.samples().hasFailed());
    Audio audio = recorder.samples().audio();
    EXPECT_GE(static_cast<double>(framesOf(audio)), shortest);
    EXPECT_LE(static_cast<double>(framesOf(audio)), longest);
    return audio;
  }

  TestServer server;
  Player player{server.socketPath()};
  Recorder recorder{server.socketPath()};
  CA::AudioObjectID process = 0;  ///< the player's

 private:
  std::optional<Stopwatch> sinceCall_;
  std::optional<Stopwatch> sinceReturn_;
};

}  // namespace audrel::pwtest
