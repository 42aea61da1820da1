// Programs that play through JACK are recorded like others, and see nothing of it but the links.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/linux/pipewire/harness/JackPlayer.h"
#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/PulsePlayer.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/SinkMonitor.h"
#include "tests/platform/linux/pipewire/harness/Stamp.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/pipewire/harness/ToneReading.h"
#include "tests/platform/linux/pipewire/harness/Track.h"
#include "tests/support/ChildProcess.h"

namespace audrel::pwtest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

constexpr int cycles = 200;
constexpr std::uint64_t frames = 1024 * cycles;

const std::vector<std::string> stereo = {"outputs=2", "stamp=1"};

class Jack : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(server.isRunning()); }

  std::unique_ptr<support::ChildProcess> startProgram(std::vector<std::string> arguments) {
    return startJackProgram(server.socketPath(), std::move(arguments));
  }

  /// Waits for a port of a program that is not ours, which has its node before its ports.
  bool waitForPort(const std::string& name) {
    return waitFor([&] {
      const auto lister = startProgram({"jack_lsp"});
      lister->waitForEnd();
      return ("\n" + lister->output()).find("\n" + name + "\n") != std::string::npos;
    });
  }

  /// Ends a recording of which nothing was lost.
  Audio stopAndTake() {
    EXPECT_EQ(recorder.stop(), 0);
    EXPECT_FALSE(recorder.samples().hasFailed());
    EXPECT_EQ(recorder.lostFrames(), 0U);
    return recorder.samples().audio();
  }

  TestServer server;
  Recorder recorder{server};
};

/// The recording without a stream that is in it from `begin` to `end`.
Audio without(StampPosition first, std::uint64_t begin, std::uint64_t end, Audio audio) {
  remove({.begin = begin, .end = end, .first = first}, audio);
  return audio;
}

void expectMadeOf(const std::vector<Segment>& segments, const Audio& audio) {
  EXPECT_EQ(segmentsOf(audio), segments);
}

TEST_F(Jack, anUnmodifiedProgramIsListedAndRecordedAsTheSpeakersHaveIt) {
  const auto metronome = startProgram({"jack_metro", "--bpm", "300", "--name", "metronome"});
  ASSERT_TRUE(waitForPort("metronome:300_bpm"));
  for (const char* speaker : {"speakers:playback_FL", "speakers:playback_FR"}) {
    ASSERT_EQ(startProgram({"jack_connect", "metronome:300_bpm", speaker})->waitForEnd(), 0);
  }
  SinkMonitor monitor(server.socketPath());
  const auto process = recorder.waitForProcess(metronome->pid());
  EXPECT_THAT(recorder.processes(), ElementsAre(process));
  const auto application = recorder.captureHardware().runningApplication(metronome->pid());
  ASSERT_TRUE(application);
  EXPECT_EQ(application->localizedName, "jack_metro");
  Recorder ofMetronome(server);
  ASSERT_EQ(recorder.startEverything(), 0);
  ASSERT_EQ(ofMetronome.startProcess(process), 0);
  ASSERT_TRUE(server.step(cycles, {{"metronome -> speakers", 2},
                                   {"metronome -> audrel-tap", 4},
                                   {"speakers -> test-monitor", 2}}));
  ASSERT_EQ(ofMetronome.stop(), 0);
  monitor.stop();

  const Audio audio = stopAndTake();
  EXPECT_EQ(framesOf(audio), frames);
  EXPECT_LT(firstSound(audio), frames);
  EXPECT_EQ(audio, monitor.samples().audio());
  EXPECT_EQ(audio, ofMetronome.samples().audio());
}

TEST_F(Jack, everythingHasAClientToTheSampleWhileItIsLinkedToTheSpeakers) {
  JackPlayer band(server.socketPath(), "band", stereo);
  ASSERT_TRUE(band.isReady());
  ASSERT_EQ(recorder.startEverything(), 0);
  ASSERT_TRUE(server.step(cycles, {}));
  ASSERT_TRUE(band.connectToSpeakers());
  ASSERT_TRUE(server.step(cycles, heard({"band"})));
  ASSERT_TRUE(band.disconnectFromSpeakers());
  ASSERT_TRUE(server.step(cycles, {}));
  ASSERT_TRUE(band.connectToSpeakers());
  ASSERT_TRUE(server.step(cycles, heard({"band"})));
  band.end(SIGKILL);
  ASSERT_TRUE(server.step(cycles, {}));

  expectMadeOf(
      {silentSegment(0, frames), stampedSegment(frames, frames, {1, frames}),
       silentSegment(2 * frames, frames), stampedSegment(3 * frames, frames, {1, 3 * frames}),
       silentSegment(4 * frames, frames)},
      stopAndTake());
}

TEST_F(Jack, aPortIsHeardOnTheSideOnWhichTheSpeakersHaveIt) {
  JackPlayer band(server.socketPath(), "band", stereo);
  ASSERT_TRUE(band.isReady());
  ASSERT_TRUE(band.connect("band:out_1", "speakers:playback_FR"));
  ASSERT_EQ(recorder.startEverything(), 0);
  ASSERT_TRUE(server.step(cycles, {{"band -> speakers", 1}, {"band -> audrel-tap", 1}}));

  const Audio audio = stopAndTake();
  ASSERT_EQ(framesOf(audio), frames);
  for (std::size_t frame = 0; frame < frames; ++frame) {
    ASSERT_EQ(audio[2 * frame], 0) << frame;
    ASSERT_EQ(audio[2 * frame + 1], asFloat(stampedSample({1, frame}, 0))) << frame;
  }
}

TEST_F(Jack, oneClientIsRecordedWithAllItsOutputsWhereverTheyLead) {
  JackPlayer band(server.socketPath(), "band", stereo);
  JackPlayer other(server.socketPath(), "other", {"outputs=2", "stamp=2"});
  ASSERT_TRUE(band.isReady() && other.isReady());
  ASSERT_TRUE(other.connectToSpeakers());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(band.pid())), 0);
  Links links = stereoLinks({"other"}, {"speakers"});
  links["band -> audrel-tap"] = 2;
  ASSERT_TRUE(server.step(cycles, links));
  ASSERT_TRUE(band.connectToSpeakers());
  links["band -> speakers"] = 2;
  ASSERT_TRUE(server.step(cycles, links));

  expectMadeOf({stampedSegment(0, 2 * frames, {1, 0})}, stopAndTake());
}

TEST_F(Jack, clientsWithoutAudioOutputsAreNotListed) {
  JackPlayer meter(server.socketPath(), "meter", {"inputs=2"});
  const auto sequencer = startProgram({"jack_midiseq", "sequencer", "48000", "0", "60", "24000"});
  ASSERT_TRUE(waitForPort("sequencer:out"));
  JackPlayer band(server.socketPath(), "band", stereo);
  ASSERT_TRUE(meter.isReady() && band.isReady());
  const auto process = recorder.waitForProcess(band.pid());
  EXPECT_THAT(recorder.processes(), ElementsAre(process));
}

TEST_F(Jack, anEffectOnWhatIsRecordedAnywayStaysOutUntilNothingFeedsIt) {
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  JackPlayer effect(server.socketPath(), "effect", {"outputs=2", "inputs=2", "stamp=2"});
  ASSERT_TRUE(effect.isReady() && effect.connectToSpeakers());
  ASSERT_TRUE(waitFor([&] { return effect.connect("music:output_FL", "effect:in_1"); }));
  ASSERT_TRUE(effect.connect("music:output_FR", "effect:in_2"));
  ASSERT_EQ(recorder.startEverything(), 0);
  Links links = heard({"music"});
  links["music -> effect"] = 2;
  links["effect -> speakers"] = 2;
  ASSERT_TRUE(server.step(cycles, links));
  ASSERT_TRUE(effect.disconnect("music:output_FL", "effect:in_1"));
  ASSERT_TRUE(effect.disconnect("music:output_FR", "effect:in_2"));
  ASSERT_TRUE(server.step(cycles, heard({"music", "effect"})));
  ASSERT_TRUE(effect.connect("music:output_FL", "effect:in_1"));
  links["music -> effect"] = 1;
  ASSERT_TRUE(server.step(cycles, links));

  expectMadeOf({silentSegment(0, frames), stampedSegment(frames, frames, {2, frames}),
                silentSegment(2 * frames, frames)},
               without({1, 0}, 0, 3 * frames, stopAndTake()));
}

TEST_F(Jack, whatIsHeardThroughAnotherClientAloneIsRecordedThroughThat) {
  JackPlayer effect(server.socketPath(), "effect", {"outputs=2", "inputs=2", "stamp=2"});
  JackPlayer band(server.socketPath(), "band", stereo);
  ASSERT_TRUE(band.isReady() && effect.isReady() && effect.connectToSpeakers());
  ASSERT_TRUE(band.connect("band:out_1", "effect:in_1"));
  ASSERT_TRUE(band.connect("band:out_2", "effect:in_2"));
  ASSERT_EQ(recorder.startEverything(), 0);
  Links links = heard({"effect"});
  links["band -> effect"] = 2;
  ASSERT_TRUE(server.step(cycles, links));
  ASSERT_TRUE(band.connectToSpeakers());
  links = heard({"band"});
  links["band -> effect"] = 2;
  links["effect -> speakers"] = 2;
  ASSERT_TRUE(server.step(cycles, links));

  expectMadeOf({stampedSegment(0, 2 * frames, {1, 0})}, without({2, 0}, 0, frames, stopAndTake()));
}

TEST_F(Jack, ofClientsThatFeedEachOtherInACircleOneCounts) {
  JackPlayer first(server.socketPath(), "first", {"outputs=2", "inputs=2", "stamp=1"});
  JackPlayer second(server.socketPath(), "second", {"outputs=2", "inputs=2"});
  ASSERT_TRUE(first.isReady() && second.isReady());
  ASSERT_TRUE(first.connectToSpeakers() && second.connectToSpeakers());
  ASSERT_TRUE(first.connect("first:out_1", "second:in_1"));
  ASSERT_TRUE(first.connect("second:out_2", "first:in_2"));
  ASSERT_EQ(recorder.startEverything(), 0);
  ASSERT_TRUE(server.step(cycles, {{"first -> speakers", 2},
                                   {"first -> second", 1},
                                   {"second -> first", 1},
                                   {"second -> speakers", 2},
                                   {"first -> audrel-tap", 2}}));
  expectMadeOf({stampedSegment(0, frames, {1, 0})}, stopAndTake());
}

TEST_F(Jack, playersOfThreeKindsAreRecordedAsTheirExactSum) {
  constexpr int shortly = 40;
  constexpr std::uint64_t end = 1024 * shortly;
  static_assert(end < PulsePlayer::playedFrames);
  JackPlayer band(server.socketPath(), "band", stereo);
  Player player(server.socketPath());
  ASSERT_TRUE(band.isReady() && band.connectToSpeakers());
  ASSERT_TRUE(player.open("music", 2));
  const PulsePlayer radio(server.socketPath(), "radio", 3);
  ASSERT_EQ(recorder.startEverything(), 0);
  ASSERT_TRUE(server.step(shortly, heard({"band", "music", "radio"})));

  // The server for PulseAudio may begin with silence.
  const auto ofRadio =
      segmentsWithoutLead(without({1, 0}, 0, end, without({2, 0}, 0, end, stopAndTake())));
  ASSERT_EQ(ofRadio.size(), 1U) << describe(ofRadio);
  EXPECT_EQ(ofRadio.front().end(), end);
  EXPECT_EQ(ofRadio.front().first, (StampPosition{3, 0}));
}

bool isOfTap(const std::string& port) {
  return port.find("Audrel Tap:") != std::string::npos;
}

/// What a client sees, besides its links to the tap.
struct View {
  std::vector<std::string> left;
  std::vector<std::string> right;
  std::pair<std::uint32_t, std::uint32_t> latency;

  bool operator==(const View&) const = default;
};

View viewOf(JackPlayer& client) {
  View view = {.left = client.connections("out_1"),
               .right = client.connections("out_2"),
               .latency = client.playbackLatency("out_1")};
  for (auto* side : {&view.left, &view.right}) {
    std::erase_if(*side, isOfTap);
  }
  return view;
}

TEST_F(Jack, connectionsLatencyAndQuantumStayBeforeDuringAndAfterARecording) {
  JackPlayer amplifier(server.socketPath(), "amplifier", {"inputs=2", "latency=480"});
  JackPlayer band(server.socketPath(), "band", stereo);
  ASSERT_TRUE(amplifier.isReady() && band.isReady());
  ASSERT_TRUE(band.connect("band:out_1", "amplifier:in_1"));
  ASSERT_TRUE(band.connect("band:out_2", "amplifier:in_2"));
  const View before = {
      .left = {"amplifier:in_1"}, .right = {"amplifier:in_2"}, .latency = {480, 480}};
  Links links = stereoLinks({"band"}, {"amplifier"});
  ASSERT_TRUE(server.step(cycles, links));
  ASSERT_TRUE(waitFor([&] { return viewOf(band) == before; }))
      << testing::PrintToString(band.playbackLatency("out_1"));

  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(band.pid())), 0);
  links["band -> audrel-tap"] = 2;
  ASSERT_TRUE(server.step(cycles, links));
  EXPECT_THAT(band.connections("out_1"),
              UnorderedElementsAre("amplifier:in_1", HasSubstr("Audrel Tap:input_FL")));
  EXPECT_EQ(viewOf(band), before);
  Player call(server.socketPath());
  ASSERT_TRUE(call.open("call", "stamp:2 f32 2 48000 node.latency=256/48000"));
  links["call -> speakers"] = 2;
  ASSERT_TRUE(server.step(cycles, links));
  ASSERT_EQ(recorder.stop(), 0);
  links.erase("band -> audrel-tap");
  ASSERT_TRUE(server.step(cycles, links));

  EXPECT_EQ(viewOf(band), before);
  EXPECT_THAT(band.connections("out_1"), ElementsAre("amplifier:in_1"));
  EXPECT_EQ(band.report().shortestQuantum, 1024U);
  EXPECT_EQ(band.report().longestQuantum, 1024U);
  expectMadeOf({stampedSegment(0, 2 * frames, {1, frames})}, recorder.samples().audio());
}

}  // namespace
}  // namespace audrel::pwtest
