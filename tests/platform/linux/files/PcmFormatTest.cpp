#include "platform/linux/files/PcmFormat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "tests/platform/linux/files/Recordings.h"

namespace audrel::linuxos::test {
namespace {

using Description = CA::AudioStreamBasicDescription;
using enum AV::AudioCommonFormat;

Description integerDescription(std::uint32_t bits, std::uint32_t bytes) {
  Description description = floatDescription(48000, 2);
  description.mFormatFlags = CA::kAudioFormatFlagIsSignedInteger;
  if (bits == bytes * 8) {
    description.mFormatFlags |= CA::kAudioFormatFlagIsPacked;
  }
  description.mBitsPerChannel = bits;
  description.mBytesPerFrame = description.mBytesPerPacket = 2 * bytes;
  return description;
}

TEST(PcmFormat, tellsWhatItsDescriptionSays) {
  const auto format = PcmFormat::make(floatDescription(44100, 2));
  ASSERT_TRUE(format);
  EXPECT_EQ(format->streamDescription(), floatDescription(44100, 2));
  EXPECT_EQ(format->sampleRate(), 44100);
  EXPECT_EQ(format->channelCount(), 2U);
  EXPECT_TRUE(format->isInterleaved());
  EXPECT_EQ(format->commonFormat(), pcmFormatFloat32);
}

TEST(PcmFormat, nonInterleavedSizesAreOfOneChannel) {
  Description description = floatDescription(48000, 2);
  description.mFormatFlags |= CA::kAudioFormatFlagIsNonInterleaved;
  EXPECT_FALSE(PcmFormat::make(description)) << "8 bytes for a packed sample of 4";

  description.mBytesPerFrame = description.mBytesPerPacket = 4;
  const auto format = PcmFormat::make(description);
  ASSERT_TRUE(format);
  EXPECT_FALSE(format->isInterleaved());
  EXPECT_EQ(format->commonFormat(), pcmFormatFloat32);
}

TEST(PcmFormat, knowsTheCommonFormats) {
  Description doubles = floatDescription(48000, 2);
  doubles.mBitsPerChannel = 64;
  doubles.mBytesPerFrame = doubles.mBytesPerPacket = 16;
  EXPECT_EQ(PcmFormat::make(doubles)->commonFormat(), pcmFormatFloat64);
  EXPECT_EQ(PcmFormat::make(integerDescription(16, 2))->commonFormat(), pcmFormatInt16);
  EXPECT_EQ(PcmFormat::make(integerDescription(32, 4))->commonFormat(), pcmFormatInt32);
}

TEST(PcmFormat, otherPcmIsAFormatButNoCommonOne) {
  EXPECT_EQ(PcmFormat::make(integerDescription(24, 3))->commonFormat(), otherFormat);
  EXPECT_EQ(PcmFormat::make(integerDescription(24, 4))->commonFormat(), otherFormat);
  EXPECT_EQ(PcmFormat::make(integerDescription(8, 1))->commonFormat(), otherFormat);

  constexpr std::uint32_t bigEndian = 1U << 1U;
  Description swapped = integerDescription(16, 2);
  swapped.mFormatFlags |= bigEndian;
  EXPECT_EQ(PcmFormat::make(swapped)->commonFormat(), otherFormat);

  Description unsignedSamples = integerDescription(16, 2);
  unsignedSamples.mFormatFlags = CA::kAudioFormatFlagIsPacked;
  EXPECT_EQ(PcmFormat::make(unsignedSamples)->commonFormat(), otherFormat);
}

TEST(PcmFormat, sampleSizesAreThoseOfTheCommonFormats) {
  EXPECT_EQ(sampleSize(pcmFormatFloat32), 4U);
  EXPECT_EQ(sampleSize(pcmFormatFloat64), 8U);
  EXPECT_EQ(sampleSize(pcmFormatInt16), 2U);
  EXPECT_EQ(sampleSize(pcmFormatInt32), 4U);
  EXPECT_EQ(sampleSize(otherFormat), 0U);
}

struct Contradiction {
  const char* name;
  std::function<void(Description&)> change;
};

class Contradictory : public testing::TestWithParam<Contradiction> {};

TEST_P(Contradictory, descriptionsMakeNoFormat) {
  Description description = floatDescription(48000, 2);
  GetParam().change(description);
  EXPECT_FALSE(PcmFormat::make(description));
}

INSTANTIATE_TEST_SUITE_P(
    PcmFormat, Contradictory,
    testing::Values(
        Contradiction{"nothing", [](Description& d) { d = Description(); }},
        Contradiction{"noRate", [](Description& d) { d.mSampleRate = 0; }},
        Contradiction{"negativeRate", [](Description& d) { d.mSampleRate = -1; }},
        Contradiction{"rateThatIsNoNumber", [](Description& d) { d.mSampleRate = std::nan(""); }},
        Contradiction{
            "infiniteRate",
            [](Description& d) { d.mSampleRate = std::numeric_limits<double>::infinity(); }},
        Contradiction{"notPcm", [](Description& d) { d.mFormatID = CA::kAudioFormatMPEG4AAC; }},
        Contradiction{"noChannels", [](Description& d) { d.mChannelsPerFrame = 0; }},
        Contradiction{"packetOfTwoFrames", [](Description& d) { d.mFramesPerPacket = 2; }},
        Contradiction{"noFrameSize",
                      [](Description& d) { d.mBytesPerFrame = d.mBytesPerPacket = 0; }},
        Contradiction{"packetLargerThanItsFrame", [](Description& d) { d.mBytesPerPacket = 16; }},
        Contradiction{"frameThatChannelsDoNotDivide",
                      [](Description& d) { d.mBytesPerFrame = d.mBytesPerPacket = 9; }},
        Contradiction{"noBits", [](Description& d) { d.mBitsPerChannel = 0; }},
        Contradiction{"moreBitsThanBytes", [](Description& d) { d.mBitsPerChannel = 33; }},
        Contradiction{"packedWithSpareBits", [](Description& d) { d.mBitsPerChannel = 24; }},
        Contradiction{"floatOf24Bits",
                      [](Description& d) {
                        d.mBitsPerChannel = 24;
                        d.mFormatFlags = CA::kAudioFormatFlagIsFloat;
                      }},
        Contradiction{
            "floatAndInteger",
            [](Description& d) { d.mFormatFlags |= CA::kAudioFormatFlagIsSignedInteger; }}),
    [](const auto& parameter) { return parameter.param.name; });

}  // namespace
}  // namespace audrel::linuxos::test
