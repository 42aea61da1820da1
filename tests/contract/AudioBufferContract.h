#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <thread>
#include <utility>
#include <vector>

#include "platform/AVFAudio.h"
#include "tests/contract/AudioDescriptions.h"

/// What every platform's buffers keep. An implementation is a type with
///   AV::AudioFramework& audioFramework();
namespace audrel::contract {

inline std::span<CA::AudioBuffer> partsOf(AV::PCMBuffer& buffer) {
  CA::AudioBufferList& list = *buffer.mutableAudioBufferList();
  return {&list.mBuffers[0], list.mNumberBuffers};
}

inline std::vector<std::uint32_t> sizesOf(AV::PCMBuffer& buffer) {
  std::vector<std::uint32_t> sizes;
  for (const CA::AudioBuffer& part : partsOf(buffer)) {
    sizes.push_back(part.mDataByteSize);
  }
  return sizes;
}

template <typename Implementation>
class AudioBufferContract : public testing::Test {
 protected:
  std::unique_ptr<AV::PCMBuffer> make(Channels layout, std::uint32_t frameCapacity) {
    AV::AudioFramework& framework = implementation.audioFramework();
    return framework.makePCMBuffer(framework.makeFormat(floatStereo(layout)), frameCapacity);
  }

  Implementation implementation;
};

TYPED_TEST_SUITE_P(AudioBufferContract);

TYPED_TEST_P(AudioBufferContract, interleavedChannelsLieInOneBufferAndSeparateOnesInABufferEach) {
  const auto interleaved = this->make(Channels::interleaved, 16);
  const auto separate = this->make(Channels::separate, 16);
  ASSERT_NE(interleaved, nullptr);
  ASSERT_NE(separate, nullptr);
  ASSERT_EQ(partsOf(*interleaved).size(), 1U);
  EXPECT_EQ(partsOf(*interleaved)[0].mNumberChannels, 2U);
  EXPECT_NE(partsOf(*interleaved)[0].mData, nullptr);
  ASSERT_EQ(partsOf(*separate).size(), 2U);
  for (const CA::AudioBuffer& part : partsOf(*separate)) {
    EXPECT_EQ(part.mNumberChannels, 1U);
    EXPECT_NE(part.mData, nullptr);
  }
}

TYPED_TEST_P(AudioBufferContract, aNewBufferIsEmpty) {
  for (const std::uint32_t frames : {300U, 0U}) {
    const auto buffer = this->make(Channels::interleaved, frames);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer->frameCapacity(), frames);
    EXPECT_EQ(buffer->frameLength(), 0U);
    EXPECT_EQ(sizesOf(*buffer), (std::vector<std::uint32_t>{0}));
    buffer->setFrameLength(0);
    EXPECT_EQ(sizesOf(*buffer), (std::vector<std::uint32_t>{0}));
  }
}

TYPED_TEST_P(AudioBufferContract, sizesFollowTheLength) {
  const auto interleaved = this->make(Channels::interleaved, 300);
  const auto separate = this->make(Channels::separate, 300);
  ASSERT_NE(interleaved, nullptr);
  ASSERT_NE(separate, nullptr);
  for (const std::uint32_t frames : {300U, 7U, 0U, 1U, 299U}) {
    interleaved->setFrameLength(frames);
    EXPECT_EQ(interleaved->frameLength(), frames);
    EXPECT_EQ(sizesOf(*interleaved), (std::vector<std::uint32_t>{8 * frames}));
    separate->setFrameLength(frames);
    EXPECT_EQ(separate->frameLength(), frames);
    EXPECT_EQ(sizesOf(*separate), (std::vector<std::uint32_t>{4 * frames, 4 * frames}));
  }
}

TYPED_TEST_P(AudioBufferContract, theWholeCapacityIsMemoryOfItsOwn) {
  const auto first = this->make(Channels::separate, 512);
  const auto second = this->make(Channels::separate, 512);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  std::vector<CA::AudioBuffer> all;
  for (AV::PCMBuffer* buffer : {first.get(), second.get()}) {
    buffer->setFrameLength(512);
    const auto parts = partsOf(*buffer);
    all.insert(all.end(), parts.begin(), parts.end());
  }
  int value = 0;
  for (const CA::AudioBuffer& part : all) {
    std::memset(part.mData, ++value, 512 * sizeof(float));
  }
  value = 0;
  for (const CA::AudioBuffer& part : all) {
    const std::vector<std::uint8_t> written(512 * sizeof(float),
                                            static_cast<std::uint8_t>(++value));
    EXPECT_EQ(std::memcmp(part.mData, written.data(), written.size()), 0);
  }
}

TYPED_TEST_P(AudioBufferContract, aBufferKeepsItsFormat) {
  AV::AudioFramework& framework = this->implementation.audioFramework();
  auto format = framework.makeFormat(floatStereo());
  const auto buffer = framework.makePCMBuffer(format, 16);
  ASSERT_NE(buffer, nullptr);
  format.reset();
  EXPECT_EQ(buffer->format().sampleRate(), 48000);
  EXPECT_EQ(buffer->format().channelCount(), 2U);
}

// As the IO thread does it: a thread that only the system knows.
TYPED_TEST_P(AudioBufferContract, aBufferIsMadeOnOneThreadAndGoneOnAnother) {
  AV::AudioFramework& framework = this->implementation.audioFramework();
  const auto format = framework.makeFormat(floatStereo());
  std::unique_ptr<AV::PCMBuffer> made;
  std::thread([&] {
    made = framework.makePCMBuffer(format, 64);
    made->setFrameLength(64);
  }).join();
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(sizesOf(*made), (std::vector<std::uint32_t>{512}));
  std::thread([gone = std::move(made)]() mutable { gone.reset(); }).join();
  EXPECT_EQ(format->channelCount(), 2U);
}

REGISTER_TYPED_TEST_SUITE_P(AudioBufferContract,
                            interleavedChannelsLieInOneBufferAndSeparateOnesInABufferEach,
                            aNewBufferIsEmpty, sizesFollowTheLength,
                            theWholeCapacityIsMemoryOfItsOwn, aBufferKeepsItsFormat,
                            aBufferIsMadeOnOneThreadAndGoneOnAnother);

}  // namespace audrel::contract
