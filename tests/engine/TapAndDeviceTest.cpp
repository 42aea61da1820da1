#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tests/engine/EngineTest.h"
#include "tests/fakes/ScopedCommaLocale.h"

namespace audrel {
namespace {

using Kind = CA::TapDescription::Kind;
using TapAndDevice = EngineTest;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(TapAndDevice, theTapOfAllSystemAudioExcludesNothingNotEvenTheRecorder) {
  ASSERT_EQ(start(), std::nullopt);
  EXPECT_EQ(world.hardware.lastTapDescription->kind, Kind::stereoGlobalTapButExcludeProcesses);
  EXPECT_THAT(world.hardware.lastTapDescription->processes, IsEmpty());
  EXPECT_EQ(world.hardware.lastTapDescription->muteBehavior, CA::TapMuteBehavior::unmuted);
}

TEST_F(TapAndDevice, theTapOfAProcessListsThatOneProcessObjectAndLeavesItAudible) {
  ASSERT_EQ(start(RecordingSource::process(4'000'000'000, "Radio", "x")), std::nullopt);
  EXPECT_EQ(world.hardware.lastTapDescription->kind, Kind::stereoMixdownOfProcesses);
  EXPECT_THAT(world.hardware.lastTapDescription->processes, ElementsAre(4'000'000'000));
  EXPECT_EQ(world.hardware.lastTapDescription->muteBehavior, CA::TapMuteBehavior::unmuted);
}

TEST_F(TapAndDevice, theOutputDeviceIsTheClockAndNoSubDevice) {
  ASSERT_EQ(start(), std::nullopt);
  const auto& entries = world.hardware.lastAggregateDescription->entries;
  EXPECT_FALSE(entries.contains("subdevices"));
  EXPECT_EQ(std::get<std::string>(entries.at("master")), world.hardware.outputDeviceUID);
}

TEST_F(TapAndDevice, everyAggregateDeviceHasAFreshUID) {
  std::vector<std::string> uids;
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(start(), std::nullopt);
    const auto& entries = world.hardware.lastAggregateDescription->entries;
    uids.push_back(std::get<std::string>(entries.at("uid")));
    engine->stop();
  }
  EXPECT_NE(uids[0], uids[1]);
}

struct TapFormatLine {
  CA::AudioStreamBasicDescription format;
  const char* line;
};

class TapFormat : public EngineTest, public testing::WithParamInterface<TapFormatLine> {};

TEST_P(TapFormat, isLoggedInFullAndTheFileIsOpenedInIt) {
  world.hardware.tapFormat = GetParam().format;
  ASSERT_EQ(start(), std::nullopt);
  EXPECT_THAT(world.journal.lines("log io.github.audrel.Audrel [engine] info: Tap format"),
              ElementsAre(info(GetParam().line)));
  const auto& format = *Inspector::writerFormat(*engine);
  const auto& file = *world.audio.files.front();
  EXPECT_EQ(file.commonFormat, format.commonFormat());
  EXPECT_EQ(file.interleaved, format.isInterleaved());
  EXPECT_EQ(std::get<double>(file.settings.at("AVSampleRateKey")), GetParam().format.mSampleRate);
  EXPECT_EQ(std::get<std::int64_t>(file.settings.at("AVNumberOfChannelsKey")),
            GetParam().format.mChannelsPerFrame);
}

constexpr auto lpcm = CA::kAudioFormatLinearPCM;
constexpr auto floats = CA::kAudioFormatFlagIsFloat | CA::kAudioFormatFlagIsPacked;
constexpr auto integers = CA::kAudioFormatFlagIsSignedInteger | CA::kAudioFormatFlagIsPacked;
constexpr auto split = CA::kAudioFormatFlagIsNonInterleaved;

INSTANTIATE_TEST_SUITE_P(
    Engine, TapFormat,
    testing::Values(
        TapFormatLine{
            {44100, lpcm, floats, 8, 1, 8, 2, 32, 0},
            "Tap format — sampleRate=44100.000000, channels=2, interleaved=true, common=1"},
        TapFormatLine{
            {48000, lpcm, floats, 4, 1, 4, 1, 32, 0},
            "Tap format — sampleRate=48000.000000, channels=1, interleaved=true, common=1"},
        TapFormatLine{
            {192000, lpcm, floats | split, 4, 1, 4, 6, 32, 0},
            "Tap format — sampleRate=192000.000000, channels=6, interleaved=false, common=1"},
        TapFormatLine{
            {22050.5, lpcm, integers, 4, 1, 4, 2, 16, 0},
            "Tap format — sampleRate=22050.500000, channels=2, interleaved=true, common=3"},
        TapFormatLine{
            {48000, lpcm, integers, 6, 1, 6, 2, 24, 0},
            "Tap format — sampleRate=48000.000000, channels=2, interleaved=true, common=0"}));

TEST_F(TapAndDevice, theLinesOfAStartFollowNoLocale) {
  ASSERT_EQ(start(), std::nullopt);
  engine->stop();
  const auto lines = world.journal.lines("log ");
  world.journal.clear();
  const fakes::ScopedCommaLocale locale;
  ASSERT_EQ(start(), std::nullopt);
  engine->stop();
  EXPECT_EQ(world.journal.lines("log "), lines);
}

}  // namespace
}  // namespace audrel
