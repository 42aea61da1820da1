// Several devices of one program at once.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"

namespace audrel::pwtest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int cycles = 100;
constexpr std::uint64_t frames = 1024 * cycles;

class SeveralDevices : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server.isRunning());
    ASSERT_TRUE(music.open("music", 1));
    ASSERT_TRUE(call.open("call", 2));
    ofMusic.captureHardware().setRunObserver(
        [this](std::size_t running) { told.push_back(running); });
  }

  void startBoth() {
    ASSERT_EQ(ofMusic.startProcess(ofMusic.waitForProcess(music.pid())), 0);
    ASSERT_EQ(ofCall.startProcess(ofCall.waitForProcess(call.pid())), 0);
  }

  /// Runs the graph while both play and the tapped ones are recorded.
  testing::AssertionResult step(const std::vector<std::string>& tapped) {
    Links links = stereoLinks({"music", "call"}, {"speakers"});
    links.merge(stereoLinks(tapped, {"audrel-tap"}));
    return server.step(cycles, links);
  }

  /// The sum of what the log says that each device lost.
  std::uint64_t lostByTheLog() const {
    constexpr std::string_view beginning = "error: Frames lost by the audio server — ";
    std::uint64_t sum = 0;
    for (const std::string& line : ofMusic.log().lines()) {
      sum += line.starts_with(beginning) ? std::stoull(line.substr(beginning.size())) : 0;
    }
    return sum;
  }

  std::vector<std::size_t> told;
  TestServer server;
  Player music{server.socketPath()};
  Player call{server.socketPath()};
  Recorder ofMusic{server};
  Recorder ofCall{&ofMusic};
};

TEST_F(SeveralDevices, eachStartsAndStopsOnItsOwn) {
  startBoth();
  ASSERT_TRUE(step({"music", "call"}));
  ASSERT_EQ(ofMusic.stop(), 0);
  ASSERT_TRUE(step({"call"}));
  EXPECT_TRUE(ofMusic.captureHardware().isRunning());
  ASSERT_EQ(ofCall.stop(), 0);

  EXPECT_FALSE(ofMusic.captureHardware().isRunning());
  EXPECT_THAT(told, ElementsAre(1, 2, 1, 0));
  EXPECT_EQ(segmentsOf(ofMusic.samples().audio()), std::vector{stampedSegment(0, frames, {1, 0})});
  EXPECT_EQ(segmentsOf(ofCall.samples().audio()),
            std::vector{stampedSegment(0, 2 * frames, {2, 0})});
  EXPECT_EQ(ofMusic.lostFrames(), 0U);
}

// What is missing when a graph has stood still for so long.
constexpr auto stall = std::chrono::milliseconds(300);
constexpr std::uint64_t stalled = 14'400;  // frames

TEST_F(SeveralDevices, oneThatIsDestroyedOrLosesItsProcedureEnds) {
  for (const auto& destroy : {&Recorder::destroyProcedure, &Recorder::destroyDevice}) {
    told.clear();
    const std::uint64_t lostBefore = lostByTheLog();
    startBoth();
    ASSERT_TRUE(step({"music", "call"}));
    server.pass(stall);
    ASSERT_EQ((ofMusic.*destroy)(), 0);
    ASSERT_TRUE(step({"call"}));

    EXPECT_EQ(ofMusic.samples().frames(), frames + stalled);
    EXPECT_THAT(told, ElementsAre(1, 2, 1));
    EXPECT_EQ(lostByTheLog(), lostBefore + stalled);
    ASSERT_EQ(ofMusic.stop(), 0);
    ASSERT_EQ(ofCall.stop(), 0);
  }
}

TEST_F(SeveralDevices, whatEachLostIsLoggedWhenItEndsAndCountedInAll) {
  startBoth();
  ASSERT_TRUE(step({"music", "call"}));
  server.pass(stall);
  ASSERT_EQ(ofMusic.stop(), 0);
  EXPECT_EQ(lostByTheLog(), stalled);
  EXPECT_EQ(ofMusic.lostFrames(), stalled);
  ASSERT_EQ(ofCall.stop(), 0);
  EXPECT_EQ(lostByTheLog(), 2 * stalled);
  EXPECT_EQ(ofMusic.lostFrames(), 2 * stalled);

  ASSERT_EQ(ofCall.startProcess(ofCall.waitForProcess(call.pid())), 0);
  ASSERT_TRUE(step({"call"}));
  ASSERT_EQ(ofCall.stop(), 0);
  EXPECT_EQ(segmentsOf(ofCall.samples().audio()),
            std::vector{stampedSegment(0, frames, {2, frames})});
  EXPECT_EQ(ofCall.lostFrames(), 0U);
}

TEST_F(SeveralDevices, aFailedStartIsNotTold) {
  EXPECT_NE(ofMusic.startProcess(12345), 0);
  EXPECT_EQ(ofMusic.stop(), 0);
  EXPECT_THAT(told, IsEmpty());
}

}  // namespace
}  // namespace audrel::pwtest
