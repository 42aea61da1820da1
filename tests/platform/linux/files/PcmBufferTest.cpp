#include "platform/linux/files/PcmBuffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "platform/linux/files/PcmFormat.h"
#include "tests/platform/linux/files/Recordings.h"

namespace audrel::linuxos::test {
namespace {

std::shared_ptr<const AV::AudioFormat> planar(std::uint32_t channels) {
  auto description = floatDescription(48000, 1);
  description.mChannelsPerFrame = channels;
  description.mFormatFlags |= CA::kAudioFormatFlagIsNonInterleaved;
  return PcmFormat::make(description);
}

std::shared_ptr<const AV::AudioFormat> interleaved(std::uint32_t channels) {
  return PcmFormat::make(floatDescription(48000, channels));
}

bool isAligned(const void* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer) % 16 == 0;
}

TEST(PcmBuffer, interleavedHasOneBufferOfAllChannels) {
  const auto buffer = PcmBuffer::make(interleaved(2), 512);
  ASSERT_TRUE(buffer);
  buffer->setFrameLength(512);
  const CA::AudioBufferList& list = *buffer->mutableAudioBufferList();
  ASSERT_EQ(list.mNumberBuffers, 1U);
  EXPECT_EQ(list.mBuffers[0].mNumberChannels, 2U);
  EXPECT_EQ(list.mBuffers[0].mDataByteSize, 4096U);
  EXPECT_TRUE(isAligned(list.mBuffers[0].mData));
}

TEST(PcmBuffer, nonInterleavedHasOneBufferAChannel) {
  const auto buffer = PcmBuffer::make(planar(3), 5);
  ASSERT_TRUE(buffer);
  buffer->setFrameLength(5);
  CA::AudioBufferList& list = *buffer->mutableAudioBufferList();
  ASSERT_EQ(list.mNumberBuffers, 3U);
  for (std::uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(list.mBuffers[i].mNumberChannels, 1U);
    EXPECT_EQ(list.mBuffers[i].mDataByteSize, 20U);
    EXPECT_TRUE(isAligned(list.mBuffers[i].mData));
    std::memset(list.mBuffers[i].mData, static_cast<int>(i + 1), 20);
  }
  for (std::uint32_t i = 0; i < 3; ++i) {
    const auto* bytes = static_cast<const std::uint8_t*>(list.mBuffers[i].mData);
    EXPECT_EQ(bytes[0], i + 1);
    EXPECT_EQ(bytes[19], i + 1);
  }
}

TEST(PcmBuffer, beginsEmptyAndSilent) {
  const auto buffer = PcmBuffer::make(interleaved(2), 300);
  ASSERT_TRUE(buffer);
  EXPECT_EQ(buffer->frameLength(), 0U);
  EXPECT_EQ(buffer->frameCapacity(), 300U);
  EXPECT_EQ(buffer->mutableAudioBufferList()->mBuffers[0].mDataByteSize, 0U);
  const auto* samples =
      static_cast<const float*>(buffer->mutableAudioBufferList()->mBuffers[0].mData);
  for (int i = 0; i < 600; ++i) {
    ASSERT_EQ(samples[i], 0.0F);
  }
}

TEST(PcmBuffer, lengthSetsTheSizesAndStopsAtTheCapacity) {
  const auto buffer = PcmBuffer::make(interleaved(2), 300);
  buffer->setFrameLength(7);
  EXPECT_EQ(buffer->frameLength(), 7U);
  EXPECT_EQ(buffer->mutableAudioBufferList()->mBuffers[0].mDataByteSize, 56U);
  buffer->setFrameLength(301);
  EXPECT_EQ(buffer->frameLength(), 300U);
  EXPECT_EQ(buffer->mutableAudioBufferList()->mBuffers[0].mDataByteSize, 2400U);
}

TEST(PcmBuffer, keepsItsFormatAlive) {
  auto format = interleaved(2);
  const std::weak_ptr<const AV::AudioFormat> watched = format;
  auto buffer = PcmBuffer::make(format, 4);
  format.reset();
  EXPECT_EQ(buffer->format().channelCount(), 2U);
  buffer.reset();
  EXPECT_TRUE(watched.expired());
}

TEST(PcmBuffer, withoutFormatThereIsNone) {
  EXPECT_FALSE(PcmBuffer::make(nullptr, 1));
}

TEST(PcmBuffer, withoutFramesThereIsAnEmptyOne) {
  const auto buffer = PcmBuffer::make(interleaved(2), 0);
  ASSERT_TRUE(buffer);
  buffer->setFrameLength(1);
  EXPECT_EQ(buffer->frameLength(), 0U);
}

TEST(PcmBuffer, sizesBeyondTheirTypesMakeNone) {
  EXPECT_FALSE(PcmBuffer::make(interleaved(2), 0xFFFFFFFF)) << "a buffer counts bytes in 32 bits";
  EXPECT_FALSE(PcmBuffer::make(interleaved(2), 0x20000000));
}

TEST(PcmBuffer, goesThroughAQueueInsideItsOwnWorkItem) {
  auto buffer = PcmBuffer::make(interleaved(2), 16);
  AV::PCMBuffer& inPlace = *buffer;
  float seen = -1;
  inPlace.workItem.assign([owned = std::move(buffer), &seen] {
    seen = *static_cast<const float*>(owned->mutableAudioBufferList()->mBuffers[0].mData);
  });
  inPlace.workItem.perform();
  EXPECT_EQ(seen, 0.0F);
}

}  // namespace
}  // namespace audrel::linuxos::test
