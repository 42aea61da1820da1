#include "platform/macos/AudioHardware.h"

#include "engine/TapDescription.h"
#include "tests/macos/execution/MacTest.h"

namespace audrel::macos {
namespace {

class AudioHardwareTest : public MacTest {
 protected:
  CA::AudioObjectID createTap(const RecordingSource& source) {
    CA::AudioObjectID tap = 0;
    EXPECT_EQ(hardware.AudioHardwareCreateProcessTap(tapDescription(source), &tap), 0);
    return tap;
  }

  CA::OSStatus readText(std::uint32_t object, std::uint32_t selector, std::string* text) {
    std::uint32_t size = 8;
    return hardware.AudioObjectGetPropertyData(
        object, {selector, CA::kAudioObjectPropertyScopeGlobal, 0}, 0, nullptr, &size, text);
  }

  AudioHardware hardware;
};

// The whole of what is set stands in the journal: neither private nor exclusive, no UUID, no
// process list beyond the initialiser's.
TEST_F(AudioHardwareTest, aTapOfEverythingExcludesNoProcessAndSetsMuteAndNameAlone) {
  EXPECT_EQ(createTap(RecordingSource::allSystemAudio()), 101U);
  EXPECT_EQ(journal(), (Lines{"AudioHardwareCreateProcessTap(stereo global tap but [], "
                              "muteBehavior = 0, name = \"Audrel Tap\") -> 0, tap 101"}));
}

TEST_F(AudioHardwareTest, aTapOfAProcessMixesThatProcessObjectDown) {
  createTap(RecordingSource::process(77, "Radio", std::nullopt));
  EXPECT_EQ(journal(), (Lines{"AudioHardwareCreateProcessTap(stereo mixdown of [u32 77], "
                              "muteBehavior = 0, name = \"Audrel Tap\") -> 0, tap 101"}));
}

TEST_F(AudioHardwareTest, aDescriptionWithoutMuteAndNameSetsNeither) {
  CA::AudioObjectID tap = 0;
  hardware.AudioHardwareCreateProcessTap(
      {CA::TapDescription::Kind::stereoMixdownOfProcesses, {1, 2}, {}, {}}, &tap);
  EXPECT_EQ(
      journal(),
      (Lines{"AudioHardwareCreateProcessTap(stereo mixdown of [u32 1, u32 2]) -> 0, tap 101"}));
}

TEST_F(AudioHardwareTest, aTapThatFailsLeavesTheIdAlone) {
  mac().failing["AudioHardwareCreateProcessTap"] = -50;
  CA::AudioObjectID tap = 9;
  EXPECT_EQ(hardware.AudioHardwareCreateProcessTap(
                tapDescription(RecordingSource::allSystemAudio()), &tap),
            -50);
  EXPECT_EQ(tap, 9U);
}

TEST_F(AudioHardwareTest, anAggregateDictionaryHasTheValuesAndTypesThatItWasGiven) {
  const CA::Description tap{{{"uid", "tap-101"}, {"drift", true}}};
  const CA::Description description{
      {{"name", "Audrel Tap"}, {"private", true}, {"stacked", false}, {"taps", std::vector{tap}}}};
  CA::AudioObjectID device = 0;
  EXPECT_EQ(hardware.AudioHardwareCreateAggregateDevice(description, &device), 0);
  EXPECT_EQ(device, 201U);
  EXPECT_EQ(journal(), (Lines{"AudioHardwareCreateAggregateDevice({name: \"Audrel Tap\", private: "
                              "Boolean true, stacked: Boolean false, taps: [{drift: Boolean true, "
                              "uid: \"tap-101\"}]}) -> 0, device 201"}));
}

TEST_F(AudioHardwareTest, aTextThatIsReadIsGivenBackOnce) {
  const std::size_t before = objcruntime::liveObjects();
  std::string text = "before";
  EXPECT_EQ(readText(101, CA::kAudioTapPropertyUID, &text), 0);
  EXPECT_EQ(text, "tap-101");
  EXPECT_EQ(objcruntime::liveObjects(), before);
}

TEST_F(AudioHardwareTest, aTextThatCannotBeReadLeavesTheResultAlone) {
  mac().failingProperties[CA::kAudioTapPropertyUID] = -66;
  std::string text = "before";
  EXPECT_EQ(readText(101, CA::kAudioTapPropertyUID, &text), -66);
  EXPECT_EQ(text, "before");
}

TEST_F(AudioHardwareTest, plainDataIsWrittenIntoTheCallersMemory) {
  CA::AudioStreamBasicDescription format;
  std::uint32_t size = sizeof format;
  EXPECT_EQ(hardware.AudioObjectGetPropertyData(
                101, {CA::kAudioTapPropertyFormat, CA::kAudioObjectPropertyScopeGlobal, 0}, 0,
                nullptr, &size, &format),
            0);
  EXPECT_EQ(size, 40U);
  EXPECT_EQ(format.mSampleRate, 48000);
  EXPECT_EQ(format.mFormatID, CA::kAudioFormatLinearPCM);
  EXPECT_EQ(format.mBytesPerFrame, 8U);
  EXPECT_EQ(format.mChannelsPerFrame, 2U);
}

}  // namespace
}  // namespace audrel::macos
