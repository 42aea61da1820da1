#include "engine/WriterSettings.h"

#include <gtest/gtest.h>

#include "engine/LogText.h"
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

constexpr auto u32(std::uint32_t value) {
  return AV::SettingValue(value);
}
constexpr auto integer(std::int64_t value) {
  return AV::SettingValue(value);
}
constexpr auto number(double value) {
  return AV::SettingValue(value);
}
constexpr auto boolean(bool value) {
  return AV::SettingValue(value);
}

TEST(WriterSettings, ofM4aAreTheseFiveEntriesOfTheseTypes) {
  EXPECT_EQ(writerSettings(RecordingFormat::m4a, tap(48000, 2)),
            (AV::Settings{{"AVFormatIDKey", u32(0x61616320)},
                          {"AVSampleRateKey", number(48000)},
                          {"AVNumberOfChannelsKey", integer(2)},
                          {"AVEncoderBitRateKey", integer(256000)},
                          {"AVEncoderAudioQualityKey", integer(96)}}));
}

TEST(WriterSettings, ofWavAreTheseSevenEntriesOfTheseTypes) {
  EXPECT_EQ(writerSettings(RecordingFormat::wav, tap(48000, 2)),
            (AV::Settings{{"AVFormatIDKey", u32(0x6C70636D)},
                          {"AVSampleRateKey", number(48000)},
                          {"AVNumberOfChannelsKey", integer(2)},
                          {"AVLinearPCMBitDepthKey", integer(16)},
                          {"AVLinearPCMIsBigEndianKey", boolean(false)},
                          {"AVLinearPCMIsFloatKey", boolean(false)},
                          {"AVLinearPCMIsNonInterleaved", boolean(false)}}));
}

TEST(WriterSettings, keepTheRateOfA44100HzTapInBothFormats) {
  for (const RecordingFormat format : RecordingFormat::allCases()) {
    EXPECT_EQ(writerSettings(format, tap(44100, 2)).at("AVSampleRateKey"), number(44100));
  }
}

TEST(WriterSettings, keepTheChannelsOfAMonoOrMultichannelTapInBothFormats) {
  for (const RecordingFormat format : RecordingFormat::allCases()) {
    for (const std::uint32_t channels : {1U, 6U, 64U}) {
      EXPECT_EQ(writerSettings(format, tap(48000, channels)).at("AVNumberOfChannelsKey"),
                integer(channels));
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

TEST(WriterSettings, areDescribedInOneFixedOrder) {
  EXPECT_EQ(describe(writerSettings(RecordingFormat::m4a, tap(48000, 2))),
            "[\"AVEncoderAudioQualityKey\": 96, \"AVEncoderBitRateKey\": 256000, "
            "\"AVFormatIDKey\": 1633772320, \"AVNumberOfChannelsKey\": 2, "
            "\"AVSampleRateKey\": 48000.0]");
  EXPECT_EQ(describe(writerSettings(RecordingFormat::wav, tap(44100, 1))),
            "[\"AVFormatIDKey\": 1819304813, \"AVLinearPCMBitDepthKey\": 16, "
            "\"AVLinearPCMIsBigEndianKey\": false, \"AVLinearPCMIsFloatKey\": false, "
            "\"AVLinearPCMIsNonInterleaved\": false, \"AVNumberOfChannelsKey\": 1, "
            "\"AVSampleRateKey\": 44100.0]");
}

}  // namespace
}  // namespace audrel
