// What formats are here beyond every platform's (tests/contract/AudioFormatContract.h).

#include "platform/linux/files/PcmFormat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <string>

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

TEST(PcmFormat, keepsItsDescription) {
  EXPECT_EQ(PcmFormat::make(floatDescription(44100, 2))->streamDescription(),
            floatDescription(44100, 2));
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

TEST(PcmFormat, isMadeOfNoDescriptionThatContradictsItself) {
  const std::map<std::string, std::function<void(Description&)>> contradictions = {
      {"nothing", [](auto& d) { d = Description(); }},
      {"no rate", [](auto& d) { d.mSampleRate = 0; }},
      {"negative rate", [](auto& d) { d.mSampleRate = -1; }},
      {"rate that is no number", [](auto& d) { d.mSampleRate = std::nan(""); }},
      {"infinite rate", [](auto& d) { d.mSampleRate = HUGE_VAL; }},
      {"not PCM", [](auto& d) { d.mFormatID = CA::kAudioFormatMPEG4AAC; }},
      {"no channels", [](auto& d) { d.mChannelsPerFrame = 0; }},
      {"packet of two frames", [](auto& d) { d.mFramesPerPacket = 2; }},
      {"no frame size", [](auto& d) { d.mBytesPerFrame = d.mBytesPerPacket = 0; }},
      {"packet larger than its frame", [](auto& d) { d.mBytesPerPacket = 16; }},
      {"frame that channels do not divide",
       [](auto& d) { d.mBytesPerFrame = d.mBytesPerPacket = 9; }},
      {"frame of all channels for one of its own",
       [](auto& d) { d.mFormatFlags |= CA::kAudioFormatFlagIsNonInterleaved; }},
      {"no bits", [](auto& d) { d.mBitsPerChannel = 0; }},
      {"more bits than bytes", [](auto& d) { d.mBitsPerChannel = 33; }},
      {"packed with spare bits", [](auto& d) { d.mBitsPerChannel = 24; }},
      {"float of 24 bits",
       [](auto& d) {
         d.mBitsPerChannel = 24;
         d.mFormatFlags = CA::kAudioFormatFlagIsFloat;
       }},
      {"float and integer", [](auto& d) { d.mFormatFlags |= CA::kAudioFormatFlagIsSignedInteger; }},
  };
  for (const auto& [name, change] : contradictions) {
    Description description = floatDescription(48000, 2);
    change(description);
    EXPECT_FALSE(PcmFormat::make(description)) << name;
  }
}

}  // namespace
}  // namespace audrel::linuxos::test
