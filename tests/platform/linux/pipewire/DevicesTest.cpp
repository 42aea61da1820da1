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
#include "tests/platform/linux/pipewire/harness/Track.h"

namespace audrel::pwtest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t longEnough = 240'000;  // frames

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

  /// How much of the stream a recording of nothing else lacks.
  static std::size_t missing(const Recorder& recorder, std::uint32_t stream) {
    EXPECT_FALSE(recorder.samples().hasFailed());
    Audio audio = recorder.samples().audio();
    removeHalfLinkedStarts(audio);
    std::string problem;
    const auto track = onlyTrack(audio, &problem);
    if (!track) {
      ADD_FAILURE() << problem;
      return 0;
    }
    EXPECT_EQ(track->first.stream, stream);
    EXPECT_EQ(track->end, framesOf(audio)) << problem;
    return track->silent;
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
  Recorder ofMusic{server.socketPath()};
  Recorder ofCall{&ofMusic};
};

TEST_F(SeveralDevices, eachStartsAndStopsOnItsOwn) {
  startBoth();
  ASSERT_TRUE(ofCall.waitForMore(longEnough));
  ASSERT_EQ(ofMusic.stop(), 0);
  const std::size_t framesOfMusic = ofMusic.samples().frames();
  ASSERT_TRUE(ofCall.waitForMore(longEnough));
  EXPECT_EQ(ofMusic.samples().frames(), framesOfMusic);
  EXPECT_TRUE(ofMusic.captureHardware().isRunning());
  ASSERT_EQ(ofCall.stop(), 0);

  EXPECT_FALSE(ofMusic.captureHardware().isRunning());
  EXPECT_THAT(told, ElementsAre(1, 2, 1, 0));
  EXPECT_EQ(missing(ofMusic, 1) + missing(ofCall, 2), ofMusic.lostFrames());
}

TEST_F(SeveralDevices, oneThatLosesItsProcedureEnds) {
  startBoth();
  ofMusic.stall(std::chrono::milliseconds(1000));
  ASSERT_TRUE(ofCall.waitForMore(longEnough));
  ASSERT_EQ(ofMusic.destroyProcedure(), 0);
  const std::size_t framesOfMusic = ofMusic.samples().frames();
  ASSERT_TRUE(ofCall.waitForMore(longEnough));

  EXPECT_EQ(ofMusic.samples().frames(), framesOfMusic);
  EXPECT_THAT(told, ElementsAre(1, 2, 1));
  EXPECT_GT(lostByTheLog(), 0U);
}

TEST_F(SeveralDevices, oneThatIsDestroyedEnds) {
  startBoth();
  ofMusic.stall(std::chrono::milliseconds(1000));
  ASSERT_TRUE(ofCall.waitForMore(longEnough));
  ASSERT_EQ(ofMusic.destroyDevice(), 0);
  const std::size_t framesOfMusic = ofMusic.samples().frames();
  ASSERT_TRUE(ofCall.waitForMore(longEnough));

  EXPECT_EQ(ofMusic.samples().frames(), framesOfMusic);
  EXPECT_THAT(told, ElementsAre(1, 2, 1));
  EXPECT_GT(lostByTheLog(), 0U);
}

TEST_F(SeveralDevices, whatEachLostIsLoggedWhenItEndsAndCountedInAll) {
  startBoth();
  ASSERT_TRUE(ofCall.waitForMore(longEnough));
  ofMusic.stall(std::chrono::milliseconds(1000));
  ASSERT_TRUE(ofCall.waitForMore(longEnough));
  ASSERT_EQ(ofMusic.stop(), 0);
  const std::uint64_t lostByMusic = lostByTheLog();
  EXPECT_GT(lostByMusic, 0U);
  EXPECT_GE(ofMusic.lostFrames(), lostByMusic);
  ASSERT_EQ(ofCall.stop(), 0);
  EXPECT_EQ(ofMusic.lostFrames(), lostByTheLog());

  ASSERT_EQ(ofCall.startProcess(ofCall.waitForProcess(call.pid())), 0);
  ASSERT_TRUE(ofCall.waitForMore(longEnough));
  ASSERT_EQ(ofCall.stop(), 0);
  EXPECT_EQ(missing(ofCall, 2), ofCall.lostFrames());
}

TEST_F(SeveralDevices, aFailedStartIsNotTold) {
  EXPECT_NE(ofMusic.startProcess(12345), 0);
  EXPECT_EQ(ofMusic.stop(), 0);
  EXPECT_THAT(told, IsEmpty());
}

}  // namespace
}  // namespace audrel::pwtest
