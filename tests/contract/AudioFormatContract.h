#pragma once

#include <gtest/gtest.h>

#include "platform/AVFAudio.h"
#include "tests/contract/AudioDescriptions.h"

/// What every platform's audio formats keep. An implementation is a type with
///   AV::AudioFramework& audioFramework();
namespace audrel::contract {

template <typename Implementation>
class AudioFormatContract : public testing::Test {
 protected:
  std::shared_ptr<const AV::AudioFormat> make(const CA::AudioStreamBasicDescription& description) {
    return implementation.audioFramework().makeFormat(description);
  }

  Implementation implementation;
};

TYPED_TEST_SUITE_P(AudioFormatContract);

TYPED_TEST_P(AudioFormatContract, aFormatTellsWhatItWasMadeFrom) {
  for (const double rate : {16000.0, 44100.0, 48000.0, 96000.0}) {
    for (const std::uint32_t channels : {1U, 2U}) {
      auto description = pcm(Samples::floats, 32, channels);
      description.mSampleRate = rate;
      const auto format = this->make(description);
      ASSERT_NE(format, nullptr);
      EXPECT_EQ(format->sampleRate(), rate);
      EXPECT_EQ(format->channelCount(), channels);
      EXPECT_EQ(format->streamDescription().mSampleRate, rate);
      EXPECT_EQ(format->streamDescription().mFormatID, CA::kAudioFormatLinearPCM);
      EXPECT_EQ(format->streamDescription().mChannelsPerFrame, channels);
      EXPECT_EQ(format->streamDescription().mBytesPerFrame, 4 * channels);
      EXPECT_EQ(format->streamDescription().mBitsPerChannel, 32U);
    }
  }
}

TYPED_TEST_P(AudioFormatContract, channelsAreInterleavedOrEachBufferIsOne) {
  const auto interleaved = this->make(floatStereo());
  ASSERT_NE(interleaved, nullptr);
  EXPECT_TRUE(interleaved->isInterleaved());
  EXPECT_EQ(interleaved->streamDescription().mBytesPerFrame, 8U);
  const auto separate = this->make(floatStereo(Channels::separate));
  ASSERT_NE(separate, nullptr);
  EXPECT_FALSE(separate->isInterleaved());
  EXPECT_EQ(separate->streamDescription().mBytesPerFrame, 4U);
}

TYPED_TEST_P(AudioFormatContract, floatsAndSignedIntegersOfTheUsualWidthsAreCommon) {
  using enum AV::AudioCommonFormat;
  struct Case {
    Samples samples;
    std::uint32_t bits;
    AV::AudioCommonFormat common;
  };
  for (const Case& known :
       {Case{Samples::floats, 32, pcmFormatFloat32}, Case{Samples::floats, 64, pcmFormatFloat64},
        Case{Samples::integers, 16, pcmFormatInt16}, Case{Samples::integers, 32, pcmFormatInt32}}) {
    for (const Channels layout : {Channels::interleaved, Channels::separate}) {
      const auto format = this->make(pcm(known.samples, known.bits, 2, layout));
      ASSERT_NE(format, nullptr) << known.bits;
      EXPECT_EQ(format->commonFormat(), known.common) << known.bits;
    }
  }
}

TYPED_TEST_P(AudioFormatContract, integersOf24BitsAreAFormatButNoCommonOne) {
  const auto format = this->make(pcm(Samples::integers, 24, 2));
  ASSERT_NE(format, nullptr);
  EXPECT_EQ(format->commonFormat(), AV::AudioCommonFormat::otherFormat);
}

TYPED_TEST_P(AudioFormatContract, aDescriptionOfNothingMakesNoFormat) {
  EXPECT_EQ(this->make({}), nullptr);
}

TYPED_TEST_P(AudioFormatContract, whatIsNoPcmMakesNoFormatOrOneOfWhichThereIsNoBuffer) {
  CA::AudioStreamBasicDescription aac;
  aac.mSampleRate = 48000;
  aac.mFormatID = CA::kAudioFormatMPEG4AAC;
  aac.mFramesPerPacket = 1024;
  aac.mChannelsPerFrame = 2;
  const auto format = this->make(aac);
  if (format != nullptr) {
    EXPECT_EQ(format->commonFormat(), AV::AudioCommonFormat::otherFormat);
    EXPECT_EQ(this->implementation.audioFramework().makePCMBuffer(format, 16), nullptr);
  }
}

REGISTER_TYPED_TEST_SUITE_P(AudioFormatContract, aFormatTellsWhatItWasMadeFrom,
                            channelsAreInterleavedOrEachBufferIsOne,
                            floatsAndSignedIntegersOfTheUsualWidthsAreCommon,
                            integersOf24BitsAreAFormatButNoCommonOne,
                            aDescriptionOfNothingMakesNoFormat,
                            whatIsNoPcmMakesNoFormatOrOneOfWhichThereIsNoBuffer);

}  // namespace audrel::contract
