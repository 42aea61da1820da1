// Whatever an application plays and the sinks have, the recording is stereo at the right level and
// pitch.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/Stamp.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/pipewire/harness/ToneReading.h"
#include "tests/platform/linux/pipewire/harness/Track.h"

namespace audrel::pwtest {
namespace {

const Sink stereoSink = {"speakers"};
const Sink surroundSink = {"theatre", "FL,FR,FC,LFE,RL,RR"};

/// A recording of one stream.
struct Recorded {
  Audio audio;
  double rate = 0;
};

Recorded recordStream(TestServer& server, const std::string& description, std::size_t frames) {
  Player player(server.socketPath());
  EXPECT_TRUE(player.open("music", description));
  Recorder recorder(server.socketPath());
  EXPECT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  EXPECT_TRUE(recorder.waitForMore(frames));
  EXPECT_EQ(recorder.stop(), 0);
  EXPECT_FALSE(recorder.samples().hasFailed());
  return {.audio = recorder.samples().audio(), .rate = recorder.rate()};
}

// At twenty times real time a busy machine may miss a second of a stream before it records it.
constexpr std::uint64_t frontPairOnly = 1'440'000;  // frames

/// The greatest difference between what was recorded of a 5.1 stream and its downmix at the usual
/// gains: centre and rear at -3 dB, low frequencies at -9 dB. The stream starts with its front pair
/// alone, which tells where in the stream the recording is.
float worstDownmixError(const Audio& audio) {
  const auto segments = segmentsOf(audio);
  const auto front = std::ranges::find(segments, Segment::Kind::stamped, &Segment::kind);
  if (front == segments.end() || front->endPosition() != frontPairOnly) {
    ADD_FAILURE() << describe(segments);
    return 1;
  }
  float worst = 0;
  for (std::size_t frame = front->end(); frame < framesOf(audio); ++frame) {
    const std::uint64_t position = frontPairOnly + (frame - front->end());
    std::array<float, 6> played{};
    for (std::uint32_t channel = 0; channel < played.size(); ++channel) {
      played[channel] = asFloat(stampedSample({1, position}, channel));
    }
    const auto& [frontLeft, frontRight, centre, low, rearLeft, rearRight] = played;
    const float both = 0.70711F * centre + 0.35355F * low;
    const float left = frontLeft + both + 0.70711F * rearLeft;
    const float right = frontRight + both + 0.70711F * rearRight;
    worst = std::max(
        {worst, std::abs(audio[2 * frame] - left), std::abs(audio[2 * frame + 1] - right)});
  }
  return worst;
}

TEST(Channels, surroundOnASurroundSinkIsMixedDownAtTheUsualGains) {
  TestServer server({.sinks = {surroundSink}});
  ASSERT_TRUE(server.isRunning());
  const auto recorded = recordStream(
      server, "stamp:1:" + std::to_string(frontPairOnly) + " f32 6 48000", frontPairOnly + 240'000);
  EXPECT_LT(worstDownmixError(recorded.audio), 1e-4F);
}

TEST(Channels, surroundOnAStereoSinkIsMixedDownAtTheUsualGains) {
  TestServer server({.sinks = {stereoSink}});
  ASSERT_TRUE(server.isRunning());
  const auto recorded = recordStream(
      server, "stamp:1:" + std::to_string(frontPairOnly) + " f32 6 48000", frontPairOnly + 240'000);
  EXPECT_LT(worstDownmixError(recorded.audio), 1e-4F);
}

TEST(Channels, surroundWithPortsOfItsOwnIsMixedDownAtTheUsualGains) {
  TestServer server({.sinks = {stereoSink}, .portLayout = PortLayout::ofStream});
  ASSERT_TRUE(server.isRunning());
  const auto recorded = recordStream(
      server, "stamp:1:" + std::to_string(frontPairOnly) + " f32 6 48000", frontPairOnly + 240'000);
  EXPECT_LT(worstDownmixError(recorded.audio), 1e-4F);
}

/// That the recording is the stereo stream 1 to the sample.
void expectExactStereo(const Audio& audio) {
  std::string problem;
  Audio linked = audio;
  removeHalfLinkedStarts(linked);
  const auto track = onlyTrack(linked, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_EQ(track->first.stream, 1U);
  EXPECT_EQ(track->end, framesOf(audio)) << problem;
  EXPECT_EQ(track->silent, 0U) << problem;
}

TEST(Channels, stereoOnASurroundSinkIsExactAndNoLouder) {
  TestServer server({.sinks = {surroundSink}});
  ASSERT_TRUE(server.isRunning());
  expectExactStereo(recordStream(server, "stamp:1 f32 2 48000", 240'000).audio);
}

/// That both channels of the recording are the only channel of stream 1, to the sample.
void expectExactMono(const Audio& audio) {
  constexpr std::size_t needle = 64;
  constexpr std::size_t longest = 2'000'000;
  const std::size_t begin = firstSound(audio) + longestLead;
  ASSERT_LT(begin + needle, framesOf(audio));
  std::uint64_t position = 0;
  const auto matches = [&](std::uint64_t at, std::size_t frame) {
    const float expected = asFloat(stampedSample({1, at}, 0));
    return audio[2 * frame] == expected && audio[2 * frame + 1] == expected;
  };
  const auto matchesAll = [&](std::uint64_t at) {
    std::size_t i = 0;
    while (i < needle && matches(at + i, begin + i)) {
      ++i;
    }
    return i == needle;
  };
  while (position < longest && !matchesAll(position)) {
    ++position;
  }
  ASSERT_LT(position, longest) << "what was recorded is nowhere in the stream: it begins with "
                               << audio[2 * begin] << ", " << audio[2 * begin + 1];
  for (std::size_t frame = begin; frame < framesOf(audio); ++frame) {
    ASSERT_TRUE(matches(position + (frame - begin), frame)) << frame;
  }
}

TEST(Channels, monoIsExactInBothChannelsWhereverItPlays) {
  for (const PortLayout layout : {PortLayout::ofSink, PortLayout::ofStream}) {
    TestServer server({.sinks = {stereoSink}, .portLayout = layout});
    ASSERT_TRUE(server.isRunning());
    expectExactMono(recordStream(server, "stamp:1 f32 1 48000", 240'000).audio);
  }
}

TEST(Channels, monoOnASurroundSinkIsExactInBothChannels) {
  TestServer server({.sinks = {surroundSink}});
  ASSERT_TRUE(server.isRunning());
  expectExactMono(recordStream(server, "stamp:1 f32 1 48000", 240'000).audio);
}

constexpr double frequency = 1000;  // Hz
constexpr double level = 0.5;       // as the player plays it

void expectTone(const Audio& audio, double rate) {
  const std::size_t begin = firstSound(audio) + longestLead;
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
  ASSERT_TRUE(server.isRunning());
  const auto recorded = recordStream(server, "tone:1000 s16 2 44100", 480'000);
  EXPECT_EQ(recorded.rate, 48000);
  expectTone(recorded.audio, recorded.rate);
}

TEST(Channels, aGraphAt44100HertzIsRecordedAtItsRate) {
  TestServer server({.rate = 44100, .allowedRates = "44100"});
  ASSERT_TRUE(server.isRunning());
  const auto recorded = recordStream(server, "stamp:1 f32 2 44100", 240'000);
  EXPECT_EQ(recorded.rate, 44100);
  expectExactStereo(recorded.audio);
}

TEST(Channels, aGraphThatChangesItsRateIsResampledToTheRecordings) {
  TestServer server({.allowedRates = "44100 48000"});
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", "tone:1000 f32 2 48000"));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(recorder.waitForMore(240'000));
  server.session().setClock("clock.force-rate", 44100);
  ASSERT_TRUE(waitFor([&] { return player.report("music").graphRate == 44100; }));
  const std::size_t changed = recorder.samples().frames() + 48'000;
  ASSERT_TRUE(recorder.waitForMore(480'000));
  ASSERT_EQ(recorder.stop(), 0);

  EXPECT_EQ(recorder.rate(), 48000);
  const Audio audio = recorder.samples().audio();
  expectTone({audio.begin(), audio.begin() + 2 * 200'000}, 48000);
  expectTone({audio.begin() + static_cast<std::ptrdiff_t>(2 * changed), audio.end()}, 48000);
}

TEST(Channels, aLargeCycleOfAGraphThatHalvesItsRateIsWhole) {
  TestServer server({.rate = 96000, .allowedRates = "48000 96000", .quantum = 8192});
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", "tone:1000 f32 2 48000"));
  Recorder recorder(server.socketPath());
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  server.session().setClock("clock.force-quantum", 8192);
  server.session().setClock("clock.force-rate", 48000);
  ASSERT_TRUE(waitFor([&] { return player.report("music").graphRate == 48000; }));
  const std::size_t changed = recorder.samples().frames() + 96'000;
  ASSERT_TRUE(recorder.waitForMore(960'000));
  ASSERT_EQ(recorder.stop(), 0);

  EXPECT_EQ(recorder.rate(), 96000);
  EXPECT_EQ(player.report("music").longestQuantum, 8192U);
  const Audio audio = recorder.samples().audio();
  expectTone({audio.begin() + static_cast<std::ptrdiff_t>(2 * changed), audio.end()}, 96000);
}

TEST(Channels, aRateThatIsNoLongerForcedIsTheGraphsOwnAgain) {
  TestServer server({.allowedRates = "44100 48000"});
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server.socketPath());
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
  std::uint32_t size = sizeof format;
  EXPECT_EQ(hardware.AudioObjectGetPropertyData(
                tap,
                {CA::kAudioTapPropertyFormat, CA::kAudioObjectPropertyScopeGlobal,
                 CA::kAudioObjectPropertyElementMain},
                0, nullptr, &size, &format),
            0);
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
