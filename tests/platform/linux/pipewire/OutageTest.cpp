// What becomes of a recording whose server, connection or stream is taken away, or stands still.
// Time goes on, in silence that is counted, and so does the recording when it can.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pipewire/pipewire.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/RealTime.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/pipewire/harness/Track.h"

namespace {

std::atomic<bool> areLinksSilent = false;  ///< whether no link tells of its state

}  // namespace

// In front of the library's own, for all that is loaded into this program.
extern "C" void pw_proxy_add_object_listener(pw_proxy* proxy, spa_hook* listener,
                                             const void* events, void* data) {
  static auto* const own = reinterpret_cast<decltype(&pw_proxy_add_object_listener)>(
      dlsym(RTLD_NEXT, "pw_proxy_add_object_listener"));
  const std::string_view type = pw_proxy_get_type(proxy, nullptr);
  if (!areLinksSilent || type != PW_TYPE_INTERFACE_Link) {
    own(proxy, listener, events, data);
  }
}

namespace audrel::pwtest {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::uint64_t second = 48'000;  // frames

// What is not missed at either end of an outage: a graph's cycles, and what a busy machine needs.
constexpr double slack = 4096;

/// Takes all descriptors that this process might still open.
class NoDescriptors {
 public:
  NoDescriptors() {
    getrlimit(RLIMIT_NOFILE, &usual_);
    rlimit none = usual_;
    none.rlim_cur = 3;  // what is open stays so
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &usual_); }
  NoDescriptors(const NoDescriptors&) = delete;
  NoDescriptors& operator=(const NoDescriptors&) = delete;

 private:
  rlimit usual_{};
};

class Outage : public RealTime {
 protected:
  void startAndHearASecond() {
    start([this] { return recorder.startProcess(process); });
    ASSERT_TRUE(recorder.waitForMore(second));
  }

  /// Stops, and expects one stream from its start to the end, but for one silence that is counted
  /// and as long as the outage was.
  void expectOneCountedSilence(double outageFrames) {
    Audio audio = stop();
    removeHalfLinkedStarts(audio);
    const auto segments = segmentsWithoutLead(audio);
    ASSERT_GE(segments.size(), 3U) << describe(segments);
    EXPECT_FALSE(hasKind(segments, Segment::Kind::foreign)) << describe(segments);
    EXPECT_EQ(segments.front().kind, Segment::Kind::stamped) << describe(segments);
    EXPECT_EQ(segments.back().kind, Segment::Kind::stamped) << describe(segments);
    EXPECT_GE(static_cast<double>(recorder.lostFrames()), outageFrames - slack);
    std::uint64_t silent = 0;
    for (const Segment& segment : segments) {
      silent += segment.kind == Segment::Kind::silence ? segment.length : 0;
    }
    EXPECT_GE(static_cast<double>(silent), outageFrames - slack) << describe(segments);
  }
};

TEST_F(Outage, ofAServerThatDoesNotAnswerIsALossAsWell) {
  startAndHearASecond();
  server.hang();
  EXPECT_TRUE(recorder.processes().empty());
  EXPECT_THAT(recorder.captureHardware().diagnosis(),
              testing::Optional(HasSubstr("does not answer")));
  server.goOn();
  ASSERT_TRUE(recorder.waitForMore(2 * second));

  expectOneCountedSilence(second);
  EXPECT_THAT(recorder.log().lines(), Contains(HasSubstr("error: Audio graph stands still")));
}

TEST_F(Outage, ofTheConnectionForLackOfDescriptorsIsMended) {
  start([this] { return recorder.startEverything(); });
  ASSERT_TRUE(recorder.waitForMore(second));
  {
    const NoDescriptors none;
    ASSERT_TRUE(player.open("chime", 2));
    ASSERT_TRUE(recorder.waitForMore(second));
  }
  ASSERT_TRUE(player.close("chime"));
  ASSERT_TRUE(recorder.waitForMore(2 * second));

  expectOneCountedSilence(0);
  EXPECT_THAT(recorder.log().lines(), Contains(HasSubstr("error: Audio server lost")));
  EXPECT_THAT(recorder.log().lines(), Contains(StartsWith("Audio server found again")));
  EXPECT_EQ(recorder.startEverything(), 0) << "the next recording starts as ever";
}

TEST_F(Outage, ofDescriptorsFailsAStartAndLeavesTheNextOneWhole) {
  ASSERT_FALSE(recorder.processes().empty());
  {
    const NoDescriptors none;
    EXPECT_NE(recorder.startEverything(), 0);
  }
  EXPECT_THAT(recorder.captureHardware().diagnosis(),
              testing::Optional(HasSubstr("(Too many open files): close other programs")));
  EXPECT_EQ(recorder.stop(), 0);
  start([this] { return recorder.startEverything(); });
  EXPECT_TRUE(recorder.waitForMore(second));
}

TEST_F(Outage, ofTheServerWhileLinksFormIsSilentAndCounted) {
  areLinksSilent = true;
  auto started = std::async(std::launch::async, [this] { return recorder.startProcess(process); });
  ASSERT_TRUE(waitFor(
      [this] { return server.session().linksFrom("music").contains("FL -> audrel-tap:FL"); }));
  std::this_thread::sleep_for(100ms);
  server.crash();
  EXPECT_EQ(started.get(), 0);
  areLinksSilent = false;
  ASSERT_TRUE(recorder.waitForMore(second / 2)) << "time goes on";
  EXPECT_EQ(recorder.stop(), 0);
  EXPECT_EQ(recorder.lostFrames(), recorder.samples().frames());
}

/// In time that the test holds, on a graph that it steps.
class HeldOutage : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server.isRunning());
    ASSERT_TRUE(player.open("music", 1));
    startAndHear();
  }

  void startAndHear() {
    ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
    ASSERT_TRUE(server.step(100, heard({"music"})));
  }

  /// That the recording is exact, but for one counted silence after the first hundred cycles, in
  /// which the application played so many frames.
  void expectOneSilence(std::uint64_t silent, std::uint64_t played) {
    constexpr std::uint64_t heard = 100 * 1024;
    EXPECT_EQ(segmentsOf(recorder.samples().audio()),
              (std::vector{stampedSegment(0, heard, {1, 0}), silentSegment(heard, silent),
                           stampedSegment(heard + silent, heard - played, {1, heard + played})}));
    EXPECT_EQ(recorder.lostFrames(), silent);
  }

  TestServer server;
  Player player{server.socketPath()};
  Recorder recorder{server};
};

TEST_F(HeldOutage, ofAStreamThatIsDestroyedIsSilentUntilThereIsAnother) {
  server.session().destroyNode("audrel-tap");
  ASSERT_TRUE(server.step(100, heard({"music"})));
  ASSERT_EQ(recorder.stop(), 0);

  constexpr std::uint64_t untilTheNextTick = 3 * 1024;
  expectOneSilence(untilTheNextTick, untilTheNextTick);
  EXPECT_THAT(recorder.log().lines(), Contains(HasSubstr("error: Capture stream lost")));
  EXPECT_THAT(recorder.log().lines(), Contains(StartsWith("Capture stream made again")));
}

TEST_F(HeldOutage, ofAServerThatHangsIsSilentUntilItGoesOn) {
  server.hang();
  server.pass(1s);
  EXPECT_GT(recorder.lostFrames(), second * 9 / 10) << "time goes on";
  server.goOn();
  ASSERT_TRUE(server.step(100, heard({"music"})));
  ASSERT_EQ(recorder.stop(), 0);

  expectOneSilence(second + 1024, 1024);
  EXPECT_THAT(recorder.log().lines(), Contains(HasSubstr("error: Audio graph stands still")));
  EXPECT_THAT(recorder.log().lines(), Contains(StartsWith("Audio graph goes on")));
}

TEST_F(HeldOutage, ofAServerThatHangsIsFilledUpToTheStop) {
  for (const auto hung : {300ms, 1500ms}) {
    const std::size_t before = recorder.samples().frames();
    server.hang();
    server.pass(hung);
    ASSERT_EQ(recorder.stop(), 0);
    server.goOn();
    const std::uint64_t missing = static_cast<std::uint64_t>(hung.count()) * second / 1000;
    EXPECT_EQ(recorder.samples().frames(), before + missing);
    EXPECT_EQ(recorder.lostFrames(), missing);
    startAndHear();
  }
}

TEST(OutageAtTheStart, ofTheServerFailsTheStartAndLeavesNothing) {
  for (const auto wait : {300ms, 1000ms}) {
    TestServer server({.timesRealTime = std::nullopt, .sinks = {}, .hasDriver = false});
    ASSERT_TRUE(server.isRunning());
    Recorder recorder(server.socketPath());
    auto start = std::async(std::launch::async, [&recorder] { return recorder.startEverything(); });
    std::this_thread::sleep_for(wait);
    server.crash();
    EXPECT_NE(start.get(), 0);
    EXPECT_EQ(recorder.stop(), 0);
    EXPECT_EQ(recorder.samples().frames(), 0U);
    EXPECT_FALSE(recorder.samples().hasFailed());
    EXPECT_EQ(recorder.lostFrames(), 0U);
    EXPECT_THAT(recorder.captureHardware().diagnosis(),
                testing::Optional(HasSubstr("PipeWire went away")));
    EXPECT_THAT(recorder.log().lines(), Not(Contains(HasSubstr("Audio server lost"))));
  }
}

}  // namespace
}  // namespace audrel::pwtest
