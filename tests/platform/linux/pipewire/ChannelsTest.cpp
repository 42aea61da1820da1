// Whatever an application plays and the sinks have, the recording is stereo at the right level and
// pitch.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/AudioObjectProperties.h"
#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/Stamp.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/pipewire/harness/ToneReading.h"

namespace audrel::pwtest {
namespace {

const Sink stereoSink = {"speakers"};
const Sink surroundSink = {"theatre", "FL,FR,FC,LFE,RL,RR"};

/// A recording of one stream.
struct Recorded {
  Audio audio;
  double rate = 0;
};

constexpr int cycles = 200;

/// Of a stream that is opened before the first cycle, from the first cycle on.
Recorded recordStream(TestServer& server, const std::string& description, const Links& links) {
  if (!server.isRunning()) {
    ADD_FAILURE() << "there is no server";
    return {};
  }
  Player player(server.socketPath());
  EXPECT_TRUE(player.open("music", description));
  Recorder recorder(server);
  EXPECT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  EXPECT_TRUE(server.step(cycles, links));
  EXPECT_EQ(recorder.stop(), 0);
  EXPECT_FALSE(recorder.samples().hasFailed());
  EXPECT_EQ(framesOf(recorder.samples().audio()), 1024U * cycles);
  return {.audio = recorder.samples().audio(), .rate = recorder.rate()};
}

/// That this is the downmix of a 5.1 stream at the usual gains: centre and rear at -3 dB, low
/// frequencies at -9 dB.
void expectDownmix(const Audio& audio) {
  float worst = 0;
  for (std::size_t frame = 0; frame < framesOf(audio); ++frame) {
    std::array<float, 6> played{};
    for (std::uint32_t channel = 0; channel < played.size(); ++channel) {
      played[channel] = asFloat(stampedSample({1, frame}, channel));
    }
    const auto& [frontLeft, frontRight, centre, low, rearLeft, rearRight] = played;
    const float both = 0.70711F * centre + 0.35355F * low;
    const float left = frontLeft + both + 0.70711F * rearLeft;
    const float right = frontRight + both + 0.70711F * rearRight;
    worst = std::max(
        {worst, std::abs(audio[2 * frame] - left), std::abs(audio[2 * frame + 1] - right)});
  }
  EXPECT_LT(worst, 1e-4F);
}

TEST(Channels, surroundOnASurroundSinkIsMixedDownAtTheUsualGains) {
  TestServer server({.sinks = {surroundSink}});
  expectDownmix(recordStream(server, "stamp:1 f32 6 48000",
                             {{"music -> theatre", 6}, {"music -> audrel-tap", 6}})
                    .audio);
}

TEST(Channels, surroundOnAStereoSinkIsMixedDownAtTheUsualGains) {
  TestServer server({.sinks = {stereoSink}});
  expectDownmix(recordStream(server, "stamp:1 f32 6 48000", heard({"music"})).audio);
}

TEST(Channels, surroundWithPortsOfItsOwnIsMixedDownAtTheUsualGains) {
  TestServer server({.sinks = {stereoSink}, .portLayout = PortLayout::ofStream});
  expectDownmix(recordStream(server, "stamp:1 f32 6 48000",
                             {{"music -> speakers", 2}, {"music -> audrel-tap", 6}})
                    .audio);
}

const Links onSurroundSink = {{"music -> theatre", 6}, {"music -> audrel-tap", 2}};

/// That this is the stereo stream 1 to the sample.
void expectExactStereo(const Audio& audio) {
  EXPECT_EQ(segmentsOf(audio), std::vector{stampedSegment(0, 1024 * cycles, {1, 0})});
}

TEST(Channels, stereoOnASurroundSinkIsExactAndNoLouder) {
  TestServer server({.sinks = {surroundSink}});
  expectExactStereo(recordStream(server, "stamp:1 f32 2 48000", onSurroundSink).audio);
}

/// That both channels are the only channel of stream 1, to the sample.
void expectExactMono(const Audio& audio) {
  for (std::size_t frame = 0; frame < framesOf(audio); ++frame) {
    const float expected = asFloat(stampedSample({1, frame}, 0));
    ASSERT_EQ(audio[2 * frame], expected) << frame;
    ASSERT_EQ(audio[2 * frame + 1], expected) << frame;
  }
}

TEST(Channels, monoIsExactInBothChannelsWhereverItPlays) {
  for (const PortLayout layout : {PortLayout::ofSink, PortLayout::ofStream}) {
    TestServer server({.sinks = {stereoSink}, .portLayout = layout});
    expectExactMono(recordStream(server, "stamp:1 f32 1 48000", heard({"music"})).audio);
  }
}

TEST(Channels, monoOnASurroundSinkIsExactInBothChannels) {
  TestServer server({.sinks = {surroundSink}});
  expectExactMono(recordStream(server, "stamp:1 f32 1 48000", onSurroundSink).audio);
}

constexpr double frequency = 1000;  // Hz
constexpr double level = 0.5;       // as the player plays it

// In so many frames a resampler gets into its stride.
constexpr std::size_t resampling = 4800;

void expectTone(const Audio& audio, double rate) {
  const std::size_t begin = firstSound(audio) + resampling;
  for (const Channel channel : {Channel::left, Channel::right}) {
    const ToneReading reading = readTone(audio, channel, begin, rate, frequency);
    EXPECT_NEAR(reading.frequency, frequency, 0.01);
    EXPECT_NEAR(reading.lowestLevel, level, 0.005);
    EXPECT_NEAR(reading.highestLevel, level, 0.005);
    EXPECT_LT(reading.phaseError, 0.01) << "cycles; a break in the tone shows here";
  }
}

TEST(Channels, anApplicationAt44100HertzKeepsPitchAndLevel) {
  TestServer server;
  const auto recorded = recordStream(server, "tone:1000 s16 2 44100", heard({"music"}));
  EXPECT_EQ(recorded.rate, 48000);
  expectTone(recorded.audio, recorded.rate);
}

TEST(Channels, aGraphAt44100HertzIsRecordedAtItsRate) {
  TestServer server({.rate = 44100, .allowedRates = "44100"});
  const auto recorded = recordStream(server, "stamp:1 f32 2 44100", heard({"music"}));
  EXPECT_EQ(recorded.rate, 44100);
  expectExactStereo(recorded.audio);
}

TEST(Channels, aGraphThatChangesItsRateIsResampledToTheRecordings) {
  TestServer server({.allowedRates = "44100 48000"});
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", "tone:1000 f32 2 48000"));
  Recorder recorder(server);
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(server.step(cycles, heard({"music"})));
  const auto changed = static_cast<std::ptrdiff_t>(2 * recorder.samples().frames());
  server.session().setClock("clock.force-rate", 44100);
  ASSERT_TRUE(server.step(cycles, heard({"music"})));
  ASSERT_EQ(recorder.stop(), 0);

  EXPECT_EQ(player.report("music").graphRate, 44100U);
  EXPECT_EQ(recorder.rate(), 48000);
  const Audio audio = recorder.samples().audio();
  expectTone({audio.begin(), audio.begin() + changed}, 48000);
  expectTone({audio.begin() + changed + 2 * resampling, audio.end()}, 48000);
}

TEST(Channels, aLargeCycleOfAGraphThatHalvesItsRateIsWhole) {
  TestServer server({.rate = 96000, .allowedRates = "48000 96000", .quantum = 8192});
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", "tone:1000 f32 2 48000"));
  Recorder recorder(server);
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  server.session().setClock("clock.force-quantum", 8192);
  server.session().setClock("clock.force-rate", 48000);
  ASSERT_TRUE(server.step(cycles, heard({"music"})));
  ASSERT_EQ(recorder.stop(), 0);

  EXPECT_EQ(recorder.rate(), 96000);
  const auto report = player.report("music");
  EXPECT_EQ(report.graphRate, 48000U);
  EXPECT_EQ(report.longestQuantum, 8192U);
  expectTone(recorder.samples().audio(), 96000);
}

TEST(Channels, aRateThatIsNoLongerForcedIsTheGraphsOwnAgain) {
  TestServer server({.allowedRates = "44100 48000"});
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server);
  const auto process = recorder.waitForProcess(player.pid());
  for (const auto& [forced, expected] : {std::pair(44100U, 44100U), std::pair(0U, 48000U)}) {
    server.session().setClock("clock.force-rate", forced);
    ASSERT_EQ(recorder.startProcess(process), 0);
    EXPECT_EQ(recorder.rate(), expected);
    ASSERT_EQ(recorder.stop(), 0);
  }
}

/// What a tap of everything would be recorded at. Nothing runs, so a server survives any setting.
double rateOfATap(CA::AudioHardware& hardware) {
  const CA::TapDescription everything{
      .kind = CA::TapDescription::Kind::stereoGlobalTapButExcludeProcesses,
      .processes = {},
      .muteBehavior = CA::TapMuteBehavior::unmuted,
      .name = "test"};
  CA::AudioObjectID tap = 0;
  EXPECT_EQ(hardware.AudioHardwareCreateProcessTap(everything, &tap), 0);
  CA::AudioStreamBasicDescription format;
  EXPECT_EQ(CA::readProperty(hardware, tap, CA::kAudioTapPropertyFormat, &format), 0);
  EXPECT_EQ(hardware.AudioHardwareDestroyProcessTap(tap), 0);
  return format.mSampleRate;
}

TEST(Channels, aRateThatIsNoneOrOfAnotherSubjectIsNotTaken) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Recorder recorder(server.socketPath());
  for (const char* key : {"clock.rate", "clock.force-rate"}) {
    for (const std::uint32_t rate : {4'000'000'000U, 768'001U, 7'999U}) {
      server.session().setClock(key, rate);
      EXPECT_EQ(rateOfATap(recorder.hardware()), 48000) << key << " " << rate;
    }
    server.session().setClock(key, 96'000, 42);
    EXPECT_EQ(rateOfATap(recorder.hardware()), 48000) << key << " of another subject";
  }
  for (const std::uint32_t rate : {768'000U, 8'000U}) {
    server.session().setClock("clock.force-rate", rate);
    EXPECT_EQ(rateOfATap(recorder.hardware()), rate);
  }
}

}  // namespace
}  // namespace audrel::pwtest
