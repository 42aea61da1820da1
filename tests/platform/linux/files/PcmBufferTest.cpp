// What buffers are here beyond every platform's (tests/contract/AudioBufferContract.h).

#include "platform/linux/files/PcmBuffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

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

TEST(PcmBuffer, isSilentMemoryAtAddressesForVectors) {
  for (const auto& format : {interleaved(2), planar(3)}) {
    const auto buffer = PcmBuffer::make(format, 5);
    ASSERT_TRUE(buffer);
    buffer->setFrameLength(5);
    const CA::AudioBufferList& list = *buffer->mutableAudioBufferList();
    for (std::uint32_t i = 0; i < list.mNumberBuffers; ++i) {
      const CA::AudioBuffer& part = list.mBuffers[i];
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(part.mData) % 16, 0U);
      const std::string zeros(part.mDataByteSize, '\0');
      EXPECT_EQ(std::memcmp(part.mData, zeros.data(), zeros.size()), 0);
    }
  }
}

TEST(PcmBuffer, growsNotBeyondItsCapacity) {
  const auto buffer = PcmBuffer::make(interleaved(2), 300);
  buffer->setFrameLength(301);
  EXPECT_EQ(buffer->frameLength(), 300U);
  EXPECT_EQ(buffer->mutableAudioBufferList()->mBuffers[0].mDataByteSize, 2400U);
}

TEST(PcmBuffer, releasesItsFormat) {
  auto format = interleaved(2);
  const std::weak_ptr<const AV::AudioFormat> watched = format;
  auto buffer = PcmBuffer::make(format, 4);
  format.reset();
  EXPECT_FALSE(watched.expired());
  buffer.reset();
  EXPECT_TRUE(watched.expired());
}

TEST(PcmBuffer, withoutFormatThereIsNone) {
  EXPECT_FALSE(PcmBuffer::make(nullptr, 1));
}

TEST(PcmBuffer, sizesBeyondTheirTypesMakeNone) {
  EXPECT_FALSE(PcmBuffer::make(interleaved(2), 0xFFFFFFFF)) << "a buffer counts bytes in 32 bits";
  EXPECT_FALSE(PcmBuffer::make(interleaved(2), 0x20000000));
}

}  // namespace
}  // namespace audrel::linuxos::test
