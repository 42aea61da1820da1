#include "platform/macos/AudioHardware.h"

#include "tests/macos/execution/MacTest.h"

namespace audrel::macos {
namespace {

class AudioHardwareTest : public MacTest {
 protected:
  CA::OSStatus createTap(CA::AudioObjectID* tap) {
    return hardware.AudioHardwareCreateProcessTap(
        {CA::TapDescription::Kind::stereoMixdownOfProcesses, {1, 2}, {}, {}}, tap);
  }

  CA::OSStatus readText(std::uint32_t object, std::uint32_t selector, std::string* text) {
    std::uint32_t size = 8;
    return hardware.AudioObjectGetPropertyData(
        object, {selector, CA::kAudioObjectPropertyScopeGlobal, 0}, 0, nullptr, &size, text);
  }

  AudioHardware hardware;
};

TEST_F(AudioHardwareTest, aDescriptionWithoutMuteAndNameSetsNeither) {
  CA::AudioObjectID tap = 0;
  EXPECT_EQ(createTap(&tap), 0);
  EXPECT_EQ(
      journal(),
      (Lines{"AudioHardwareCreateProcessTap(stereo mixdown of [u32 1, u32 2]) -> 0, tap 101"}));
}

TEST_F(AudioHardwareTest, aTapThatFailsLeavesTheIdAlone) {
  mac().failing["AudioHardwareCreateProcessTap"] = -50;
  CA::AudioObjectID tap = 9;
  EXPECT_EQ(createTap(&tap), -50);
  EXPECT_EQ(tap, 9U);
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

}  // namespace
}  // namespace audrel::macos
