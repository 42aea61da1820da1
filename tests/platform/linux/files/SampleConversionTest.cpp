#include "platform/linux/files/SampleConversion.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "platform/AVFAudio.h"

namespace audrel::linuxos::test {
namespace {

using enum AV::AudioCommonFormat;

template <typename Sample>
CA::AudioBufferList listOf(std::vector<Sample>& samples, std::uint32_t channels) {
  CA::AudioBufferList list;
  list.mNumberBuffers = 1;
  list.mBuffers[0] = {channels, static_cast<std::uint32_t>(samples.size() * sizeof(Sample)),
                      samples.data()};
  return list;
}

template <typename Sample>
std::vector<std::int16_t> toInt16(AV::AudioCommonFormat format, std::vector<Sample> samples) {
  std::vector<std::int16_t> out(samples.size());
  SampleConverter(format, true, 1).toInt16(listOf(samples, 1), 0, samples.size(), out.data());
  return out;
}

template <typename Sample>
std::vector<float> toFloat(AV::AudioCommonFormat format, std::vector<Sample> samples) {
  std::vector<float> out(samples.size());
  std::array<float*, 1> planes = {out.data()};
  SampleConverter(format, true, 1).toPlanarFloat(listOf(samples, 1), 0, samples.size(), planes, 0);
  return out;
}

TEST(SampleConversion, everySixteenBitValueSurvivesTheWayThroughFloats) {
  std::vector<std::int16_t> all;
  std::vector<float> floats;
  std::vector<double> doubles;
  for (int value = -32768; value <= 32767; ++value) {
    all.push_back(static_cast<std::int16_t>(value));
    floats.push_back(static_cast<float>(value) / 32768.0F);
    doubles.push_back(static_cast<double>(value) / 32768.0);
  }
  EXPECT_EQ(toInt16(pcmFormatFloat32, floats), all);
  EXPECT_EQ(toInt16(pcmFormatFloat64, doubles), all);
  EXPECT_EQ(toInt16(pcmFormatInt16, all), all);
  EXPECT_EQ(toFloat(pcmFormatInt16, all), floats);
  EXPECT_EQ(toFloat(pcmFormatFloat32, floats), floats);
}

TEST(SampleConversion, floatsAreRoundedToTheNearest) {
  constexpr float step = 1.0F / 32768.0F;
  EXPECT_EQ(toInt16<float>(pcmFormatFloat32, {10.4F * step, 10.6F * step, -10.4F * step,
                                              -10.6F * step, 10.5F * step, 11.5F * step}),
            (std::vector<std::int16_t>{10, 11, -10, -11, 10, 12}));
}

TEST(SampleConversion, floatsBeyondFullScaleAreClippedAndNoNumbersAreSilent) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(toInt16<float>(pcmFormatFloat32,
                           {1, -1, 1.5F, -1.5F, 1e30F, infinity, -infinity, std::nanf("")}),
            (std::vector<std::int16_t>{32767, -32768, 32767, -32768, 32767, 32767, -32768, 0}));
  EXPECT_EQ(toInt16<double>(pcmFormatFloat64, {2, -2, std::nan("")}),
            (std::vector<std::int16_t>{32767, -32768, 0}));
}

TEST(SampleConversion, wideIntegersAreRoundedAndClipped) {
  EXPECT_EQ(toInt16<std::int32_t>(pcmFormatInt32, {0, 1 << 16, -(1 << 16), 0x17FFF, 0x18000,
                                                   std::numeric_limits<std::int32_t>::max(),
                                                   std::numeric_limits<std::int32_t>::min()}),
            (std::vector<std::int16_t>{0, 1, -1, 1, 2, 32767, -32768}));
}

TEST(SampleConversion, anEncoderGetsFiniteValuesOnly) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(toFloat<float>(pcmFormatFloat32, {1.5F, -3, 1e30F, infinity, -infinity, std::nanf("")}),
            (std::vector<float>{1.5F, -3, 16, 16, -16, 0}));
  EXPECT_EQ(toFloat<double>(pcmFormatFloat64, {0.25, 1e300, std::nan("")}),
            (std::vector<float>{0.25F, 16, 0}));
  EXPECT_EQ(toFloat<std::int32_t>(pcmFormatInt32, {1 << 30, -(1 << 30)}),
            (std::vector<float>{0.5F, -0.5F}));
}

TEST(SampleConversion, startsAtTheFrameAskedForAndWritesWhereAskedTo) {
  std::vector<float> samples = {0.F, 0.1F, 0.2F, 0.3F, 0.4F, 0.5F};  // three stereo frames
  const SampleConverter converter(pcmFormatFloat32, true, 2);
  std::vector<float> left(4, 9.F);
  std::vector<float> right(4, 9.F);
  std::array<float*, 2> planes = {left.data(), right.data()};
  converter.toPlanarFloat(listOf(samples, 2), 1, 2, planes, 1);
  EXPECT_EQ(left, (std::vector<float>{9, 0.2F, 0.4F, 9}));
  EXPECT_EQ(right, (std::vector<float>{9, 0.3F, 0.5F, 9}));

  std::vector<std::int16_t> out(4);
  converter.toInt16(listOf(samples, 2), 1, 2, out.data());
  EXPECT_EQ(out, (std::vector<std::int16_t>{6554, 9830, 13107, 16384}));
}

TEST(SampleConversion, channelsInBuffersOfTheirOwnAreBroughtTogether) {
  std::vector<std::int16_t> left = {1, 2, 3};
  std::vector<std::int16_t> right = {10, 20, 30};
  alignas(CA::AudioBufferList)
      std::array<std::byte, sizeof(CA::AudioBufferList) + sizeof(CA::AudioBuffer)>
          memory{};
  auto* list = new (memory.data()) CA::AudioBufferList;
  list->mNumberBuffers = 2;
  list->mBuffers[0] = {1, 6, left.data()};
  new (&list->mBuffers[1]) CA::AudioBuffer{1, 6, right.data()};

  const SampleConverter converter(pcmFormatInt16, false, 2);
  EXPECT_TRUE(converter.holdsFrames(*list, 3));
  EXPECT_FALSE(converter.holdsFrames(*list, 4));
  std::vector<std::int16_t> out(4);
  converter.toInt16(*list, 1, 2, out.data());
  EXPECT_EQ(out, (std::vector<std::int16_t>{2, 20, 3, 30}));

  std::vector<float> plane(3);
  std::vector<float> otherPlane(3);
  std::array<float*, 2> planes = {plane.data(), otherPlane.data()};
  converter.toPlanarFloat(*list, 0, 3, planes, 0);
  EXPECT_EQ(otherPlane[2], 30.0F / 32768.0F);
}

TEST(SampleConversion, buffersThatHoldLessAreRefused) {
  std::vector<float> samples(8);
  const SampleConverter converter(pcmFormatFloat32, true, 2);
  CA::AudioBufferList list = listOf(samples, 2);
  EXPECT_TRUE(converter.holdsFrames(list, 4));
  EXPECT_FALSE(converter.holdsFrames(list, 5));
  list.mBuffers[0].mData = nullptr;
  EXPECT_FALSE(converter.holdsFrames(list, 4));
  EXPECT_FALSE(SampleConverter(pcmFormatFloat32, false, 2).holdsFrames(list, 1));
}

}  // namespace
}  // namespace audrel::linuxos::test
