// What is recorded is what was played, to the sample, on a server that loses no cycle.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pipewire/pipewire.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/pipewire/harness/Track.h"
#include "tests/support/ChildProcess.h"

namespace audrel::pwtest {
namespace {

constexpr std::uint64_t longEnough = 240'000;  // frames

// A graph that a stream joins or leaves in the middle of a cycle may lose that one.
constexpr std::uint64_t mostLostByJoining = 2048;  // frames
// A stream is linked when the server has announced it, which takes time, not frames.
constexpr std::uint64_t latestPickUp = 192'000;  // frames at twenty times real time

/// What was recorded, without the cycles in which one channel of a stream was not yet linked;
/// nothing of it may have been dropped on the way.
Audio recorded(const Recorder& recorder) {
  EXPECT_FALSE(recorder.samples().hasFailed());
  Audio audio = recorder.samples().audio();
  removeHalfLinkedStarts(audio);
  return audio;
}

/// That the recording is one stream from its start to its end, but for cycles that the server
/// reported as lost.
void expectWhole(const Recorder& recorder, std::uint32_t stream, std::uint64_t lostFrames) {
  const Audio audio = recorded(recorder);
  std::string problem;
  const auto track = onlyTrack(audio, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_EQ(track->first.stream, stream);
  EXPECT_LE(track->begin, longestLead);
  EXPECT_EQ(track->end, framesOf(audio)) << problem;
  EXPECT_EQ(track->silent, lostFrames) << problem;
  EXPECT_GE(track->end, longEnough);
}

/// That the recording is the sum of `first`, from its start to its end, and `second`, which
/// starts later, but for cycles that the server reported as lost.
void expectSum(const Recorder& recorder, std::uint32_t first, std::uint32_t second,
               std::uint64_t lostFrames) {
  Audio audio = recorded(recorder);
  const auto segments = segmentsWithoutLead(audio);
  ASSERT_EQ(segments.front().kind, Segment::Kind::stamped) << describe(segments);
  ASSERT_EQ(segments.front().first.stream, first) << describe(segments);
  remove({.begin = segments.front().begin, .end = framesOf(audio), .first = segments.front().first},
         audio);
  removeHalfLinkedStarts(audio);
  std::string problem;
  const auto track = onlyTrack(audio, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_EQ(track->first.stream, second);
  EXPECT_LE(track->first.position, latestPickUp);
  EXPECT_EQ(track->end, framesOf(audio)) << problem;
  EXPECT_LE(track->silent, lostFrames) << problem;
  EXPECT_LE(lostFrames, mostLostByJoining) << problem;
  EXPECT_GE(track->end - track->begin, longEnough);
}

TEST(ExactCapture, oneProcessIsRecordedToTheSampleAndWithoutABreak) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(recorder.waitForMore(2 * longEnough));
  ASSERT_EQ(recorder.stop(), 0);

  expectWhole(recorder, 1, 0);
  EXPECT_EQ(recorder.lostFrames(), 0U);
}

TEST(ExactCapture, sixteenBitPlaybackIsRecordedToTheSample) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", "stamp:1 s16 2 48000"));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(recorder.waitForMore(2 * longEnough));
  ASSERT_EQ(recorder.stop(), 0);

  expectWhole(recorder, 1, 0);
}

TEST(ExactCapture, twoApplicationsAreRecordedApartWithNoTraceOfEachOther) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player one(server.socketPath());
  Player other(server.socketPath());
  ASSERT_TRUE(one.open("music", 1));
  ASSERT_TRUE(other.open("call", 2));
  Recorder ofOne(server.socketPath());
  Recorder ofOther(server.socketPath());
  ASSERT_EQ(ofOne.startProcess(ofOne.waitForProcess(one.pid())), 0);
  ASSERT_EQ(ofOther.startProcess(ofOther.waitForProcess(other.pid())), 0);
  ASSERT_TRUE(ofOther.waitForMore(2 * longEnough));
  ASSERT_EQ(ofOne.stop(), 0);
  ASSERT_EQ(ofOther.stop(), 0);

  expectWhole(ofOne, 1, 0);
  expectWhole(ofOther, 2, ofOther.lostFrames());
}

TEST(ExactCapture, theStreamsOfOneProcessAddUpExactlyAndALaterOneIsPickedUp) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  Player neighbour(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  ASSERT_TRUE(neighbour.open("call", 3));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  ASSERT_TRUE(player.open("chime", "stamp:2 s16 2 48000"));
  ASSERT_TRUE(player.waitForMore("chime", longEnough));
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  ASSERT_EQ(recorder.stop(), 0);

  expectSum(recorder, 1, 2, recorder.lostFrames());
}

TEST(ExactCapture, allSystemAudioIsExactAcrossTwoChangesOfTheDefaultOutput) {
  TestServer server({.sinks = {{"speakers"}, {"headphones"}, {"television"}}});
  ASSERT_TRUE(server.isRunning());
  Player one(server.socketPath());
  Player other(server.socketPath());
  ASSERT_TRUE(one.open("music", 1));
  Recorder recorder(server.socketPath());
  ASSERT_NE(recorder.waitForProcess(one.pid()), 0U);
  ASSERT_EQ(recorder.startEverything(), 0);
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  ASSERT_TRUE(other.open("call", 2));
  ASSERT_TRUE(other.waitForMore("call", longEnough));
  for (const std::string sink : {"headphones", "television"}) {
    server.session().setDefaultSink(sink);
    const std::set<std::string> moved = {"FL -> " + sink + ":FL", "FR -> " + sink + ":FR"};
    ASSERT_TRUE(server.session().waitUntil(
        [&] { return server.session().linksFrom("music", "audrel-tap") == moved; },
        std::chrono::seconds(10)));
    ASSERT_TRUE(recorder.waitForMore(longEnough));
  }
  ASSERT_EQ(recorder.stop(), 0);

  expectSum(recorder, 1, 2, recorder.lostFrames());
}

/// An unmodified loopback, whose two streams have the properties given.
std::unique_ptr<support::ChildProcess> startLoopback(const TestServer& server,
                                                     const std::string& capture,
                                                     const std::string& playback) {
  return support::ChildProcess::start(
      {.arguments = {"pw-loopback", "--capture-props", capture, "--playback-props", playback},
       .environment = {{"PIPEWIRE_REMOTE", server.socketPath()}}});
}

TEST(ExactCapture, aLoopbackIsNotCountedOnTopOfWhatItIsFedWith) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  const auto loopback = startLoopback(server, "{ media.class = Audio/Sink node.name = effect }",
                                      "{ node.name = effect-output }");
  ASSERT_TRUE(waitFor([&] { return server.session().hasNode("effect-output"); }));
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", "stamp:1 f32 2 48000 target.object=effect"));
  ASSERT_TRUE(player.waitForMore("music", 48'000));
  ASSERT_TRUE(waitFor([&] { return server.session().linksFrom("effect-output").size() == 2; }));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startEverything(), 0);
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  EXPECT_EQ(server.session().linksFrom("effect-output"),
            (std::set<std::string>{"FL -> speakers:FL", "FR -> speakers:FR"}));
  ASSERT_EQ(recorder.stop(), 0);

  expectWhole(recorder, 1, recorder.lostFrames());
}

TEST(ExactCapture, aLoopbackThatIsFedByASourceIsHeard) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player telephone(server.socketPath());
  ASSERT_TRUE(telephone.open("telephone", "stamp:1 f32 2 48000 media.class=Audio/Source"));
  const auto loopback = startLoopback(server, "{ target.object = telephone node.name = line-in }",
                                      "{ node.name = line-output }");
  ASSERT_TRUE(waitFor([&] { return server.session().linksFrom("telephone").size() == 2; }));
  ASSERT_TRUE(waitFor([&] { return server.session().linksFrom("line-output").size() == 2; }));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startEverything(), 0);
  ASSERT_TRUE(recorder.waitForMore(2 * longEnough));
  ASSERT_EQ(recorder.stop(), 0);

  expectWhole(recorder, 1, recorder.lostFrames());
}

TEST(ExactCapture, pauseAndResumeLeaveSilenceOfTheRightLength) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  ASSERT_TRUE(player.pause("music"));
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  ASSERT_TRUE(player.resume("music"));
  ASSERT_TRUE(player.waitForMore("music", longEnough));
  ASSERT_EQ(recorder.stop(), 0);

  const auto stretches = player.report("music").stretches;
  ASSERT_EQ(stretches.size(), 2U);
  const std::uint64_t resumed = stretches[1].frame;
  const std::uint64_t played = resumed - stretches[0].frame;
  const std::uint64_t paused = stretches[1].graphPosition - stretches[0].graphPosition - played;
  const auto segments = segmentsWithoutLead(recorded(recorder));
  ASSERT_EQ(segments.size(), 3U) << describe(segments);
  EXPECT_EQ(segments[0].endPosition(), resumed) << describe(segments);
  EXPECT_EQ(segments[1].kind, Segment::Kind::silence) << describe(segments);
  EXPECT_EQ(segments[2].first.stream, 1U) << describe(segments);
  const std::uint64_t missed = segments[2].first.position - resumed;
  EXPECT_EQ(segments[1].length, paused + missed) << describe(segments);
  EXPECT_LE(missed, recorder.lostFrames() + longestLead) << describe(segments);
}

TEST(ExactCapture, aProcessThatExitsIsSilentFromThenOnWhoeverPlaysNext) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  player.end(SIGKILL);
  Player next(server.socketPath());
  ASSERT_TRUE(next.open("music", 2));
  ASSERT_TRUE(next.waitForMore("music", longEnough));
  ASSERT_EQ(recorder.stop(), 0);

  const auto segments = segmentsWithoutLead(recorded(recorder));
  ASSERT_EQ(segments.size(), 2U) << describe(segments);
  EXPECT_EQ(segments[0].first.stream, 1U);
  EXPECT_EQ(segments[1].kind, Segment::Kind::silence) << describe(segments);
  EXPECT_GE(segments[1].length, longEnough);
}

TEST(ExactCapture, aProcessWithoutStreamsIsTappedAndHeardWhenItPlaysAgain) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  const auto process = recorder.waitForProcess(player.pid());
  ASSERT_TRUE(player.close("music"));
  ASSERT_EQ(recorder.startProcess(process), 0);
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  ASSERT_TRUE(player.open("music", 2));
  ASSERT_TRUE(player.waitForMore("music", longEnough));
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  ASSERT_EQ(recorder.stop(), 0);

  const auto segments = segmentsOf(recorded(recorder));
  ASSERT_EQ(segments.size(), 2U) << describe(segments);
  EXPECT_EQ(segments[0].kind, Segment::Kind::silence) << describe(segments);
  EXPECT_EQ(segments[1].first.stream, 2U) << describe(segments);
}

TEST(ExactCapture, cyclesThatARecorderIsTooSlowForAreSilentAndReported) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  recorder.stall(std::chrono::milliseconds(1000));
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  ASSERT_EQ(recorder.stop(), 0);

  const std::uint64_t lostFrames = recorder.lostFrames();
  EXPECT_GE(lostFrames, 1024U);
  EXPECT_EQ(lostFrames % 1024, 0U);
  EXPECT_LE(lostFrames, 10U * 1024);
  std::string problem;
  const auto track = onlyTrack(recorded(recorder), player.report("music").stretches, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_TRUE(isExactButFor(*track, lostFrames)) << problem;
  EXPECT_THAT(recorder.log().lines(),
              testing::Contains(testing::StartsWith("error: Frames lost by the audio server — " +
                                                    std::to_string(lostFrames) + ";")));
}

TEST(ExactCapture, anApplicationThatAsksForAnotherQuantumMakesNoDifference) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  Player hurried(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  for (const std::string latency : {"256/48000", "512/48000"}) {
    ASSERT_TRUE(recorder.waitForMore(longEnough));
    ASSERT_TRUE(hurried.open("call", "stamp:2 f32 2 48000 node.latency=" + latency));
    ASSERT_TRUE(hurried.waitForMore("call", longEnough));
    ASSERT_TRUE(hurried.close("call"));
  }
  ASSERT_TRUE(recorder.waitForMore(longEnough));
  ASSERT_EQ(recorder.stop(), 0);

  const auto report = player.report("music");
  EXPECT_EQ(report.shortestQuantum, 256U);
  EXPECT_EQ(report.longestQuantum, 1024U);
  expectWhole(recorder, 1, recorder.lostFrames());
  EXPECT_LE(recorder.lostFrames(), 4 * mostLostByJoining);
}

TEST(ExactCapture, aQuantumThatIsForcedMakesNoDifferenceOrIsAPause) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  for (const std::uint32_t quantum : {2048U, 256U, 1024U}) {
    server.session().setClock("clock.force-quantum", quantum);
    ASSERT_TRUE(recorder.waitForMore(longEnough));
  }
  ASSERT_EQ(recorder.stop(), 0);

  const auto report = player.report("music");
  EXPECT_EQ(report.shortestQuantum, 256U);
  EXPECT_EQ(report.longestQuantum, 2048U);
  if (std::string_view(pw_get_library_version()).starts_with("0.")) {
    expectWhole(recorder, 1, 0);
    EXPECT_EQ(recorder.lostFrames(), 0U);
    return;
  }
  // 1.x stops every stream for it, and starts them again one by one: each is heard from when its
  // links are active, as after any pause, which at this speed takes many cycles.
  const auto segments = segmentsWithoutLead(recorded(recorder));
  std::size_t stretches = 0;
  std::uint64_t next = segments.front().first.position;
  for (const Segment& segment : segments) {
    if (segment.kind == Segment::Kind::silence) {
      continue;
    }
    ASSERT_EQ(segment.kind, Segment::Kind::stamped) << describe(segments);
    EXPECT_EQ(segment.first.stream, 1U) << describe(segments);
    ASSERT_GE(segment.first.position, next) << describe(segments);
    EXPECT_LE(segment.first.position - next, recorder.lostFrames() + longestLead)
        << describe(segments);
    next = segment.endPosition();
    ++stretches;
  }
  EXPECT_LE(stretches, 4U) << describe(segments);
  EXPECT_EQ(segments.back().kind, Segment::Kind::stamped) << describe(segments);
}

}  // namespace
}  // namespace audrel::pwtest
