#include "engine/WriterSettings.h"

#include <gtest/gtest.h>

#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/FakeHardware.h"

namespace audrel {
namespace {

fakes::FakeFormat tap(double sampleRate, std::uint32_t channels) {
  auto description = fakes::FakeHardware::floatStereo();
  description.mSampleRate = sampleRate;
  description.mChannelsPerFrame = channels;
  return fakes::FakeFormat(description);
}

TEST(WriterSettings, keepTheRateOfA44100HzTapInBothFormats) {
  for (const RecordingFormat format : RecordingFormat::allCases()) {
    EXPECT_EQ(writerSettings(format, tap(44100, 2)).at("AVSampleRateKey"),
              AV::SettingValue(44100.0));
  }
}

TEST(WriterSettings, keepTheChannelsOfAMonoOrMultichannelTapInBothFormats) {
  for (const RecordingFormat format : RecordingFormat::allCases()) {
    for (const std::uint32_t channels : {1U, 6U, 64U}) {
      EXPECT_EQ(writerSettings(format, tap(48000, channels)).at("AVNumberOfChannelsKey"),
                AV::SettingValue(std::int64_t{channels}));
    }
  }
}

TEST(WriterSettings, ofM4aHaveNoPCMKeysAndThoseOfWavNoEncoderKeys) {
  for (const auto& [key, value] : writerSettings(RecordingFormat::m4a, tap(48000, 2))) {
    EXPECT_EQ(key.find("LinearPCM"), std::string::npos) << key;
  }
  for (const auto& [key, value] : writerSettings(RecordingFormat::wav, tap(48000, 2))) {
    EXPECT_EQ(key.find("Encoder"), std::string::npos) << key;
  }
}

}  // namespace
}  // namespace audrel
