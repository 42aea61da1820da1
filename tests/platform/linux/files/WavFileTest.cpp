// WAV files as others read them.

#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace audrel::linuxos::test {
namespace {

class WavFiles : public FileTest {
 protected:
  std::filesystem::path record(const Audio& audio) {
    return FileTest::record(std::to_string(++count_) + ".wav", audio, wavSettings(audio));
  }

  int count_ = 0;
};

TEST_F(WavFiles, areSampleExactWhateverTheirLength) {
  for (const std::size_t frames : {0U, 1U, 1023U, 24000U, 24001U, 100'000U}) {
    const Audio audio = noise(frames);
    const WavContents contents = readWav(record(audio));
    EXPECT_EQ(contents.sampleRate, 48000);
    EXPECT_EQ(contents.channels, 2);
    EXPECT_EQ(contents.samples, asSixteenBit(audio.samples)) << frames;
  }
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(WavFiles, haveAnyRateAndNumberOfChannels) {
  for (const std::uint32_t channels : {1U, 2U, 3U, 6U, 8U, 11U}) {
    const Audio audio = noise(10'000, 44100, channels);
    const WavContents contents = readWav(record(audio));
    EXPECT_EQ(contents.sampleRate, 44100);
    EXPECT_EQ(contents.channels, static_cast<int>(channels));
    EXPECT_EQ(contents.samples, asSixteenBit(audio.samples)) << channels;
  }
  EXPECT_EQ(readWav(record(noise(5000, 192'000))).sampleRate, 192'000);
  EXPECT_EQ(readWav(record(noise(5, 1))).samples.size(), 10U) << "one frame a second";
}

TEST_F(WavFiles, readTheSameInOtherPrograms) {
  const Audio audio = noise(30'001);
  const auto path = record(audio);
  const Probe probed = probe(path);
  EXPECT_EQ(probed.codec, "pcm_s16le");
  EXPECT_EQ(probed.sampleRate, 48000);
  EXPECT_EQ(probed.channels, 2);
  EXPECT_EQ(probed.duration, 30'001);
  EXPECT_EQ(asSixteenBit(decode(path)), asSixteenBit(audio.samples));

  const ToolResult sox = runTool({"soxi", "-s", path.string()});
  EXPECT_EQ(sox.errors, "");
  EXPECT_EQ(sox.output, "30001\n");
}

TEST_F(WavFiles, surroundTellsItsSpeakers) {
  const ToolResult result =
      runTool({"ffprobe", "-v", "error", "-show_entries", "stream=channel_layout", "-of", "csv=p=0",
               record(noise(100, 48000, 6)).string()});
  EXPECT_EQ(result.output, "5.1\n");
}

TEST_F(WavFiles, takeEveryProcessingFormat) {
  const Audio audio = noise(30'000);
  const auto expected = asSixteenBit(audio.samples);
  const auto check = [&](AV::AudioCommonFormat commonFormat, bool interleaved, auto convert) {
    using Sample = decltype(convert(0.0F));
    auto description = floatDescription(48000, 2);
    description.mFormatFlags =
        CA::kAudioFormatFlagIsPacked |
        (std::is_floating_point_v<Sample> ? CA::kAudioFormatFlagIsFloat
                                          : CA::kAudioFormatFlagIsSignedInteger) |
        (interleaved ? 0 : CA::kAudioFormatFlagIsNonInterleaved);
    description.mBitsPerChannel = 8 * sizeof(Sample);
    description.mBytesPerFrame = description.mBytesPerPacket =
        static_cast<std::uint32_t>(sizeof(Sample) * (interleaved ? 2 : 1));
    const auto format = framework_.makeFormat(description);
    ASSERT_EQ(format->commonFormat(), commonFormat);
    const auto buffer = framework_.makePCMBuffer(format, 30'000);
    buffer->setFrameLength(30'000);
    for (std::size_t i = 0; i < audio.samples.size(); ++i) {
      auto* data = static_cast<Sample*>(
          buffer->mutableAudioBufferList()->mBuffers[interleaved ? 0 : i % 2].mData);
      data[interleaved ? i : i / 2] = convert(audio.samples[i]);
    }
    const auto path = folder_ / ("format" + std::to_string(++count_) + ".wav");
    NS::Error error;
    auto file =
        framework_.openForWriting(path, wavSettings(audio), commonFormat, interleaved, &error);
    ASSERT_TRUE(file) << error.localizedDescription;
    EXPECT_EQ(file->write(*buffer), std::nullopt);
    file.reset();
    EXPECT_EQ(readWav(path).samples, expected)
        << static_cast<int>(commonFormat) << " interleaved: " << interleaved;
  };
  for (const bool interleaved : {true, false}) {
    check(AV::AudioCommonFormat::pcmFormatFloat32, interleaved, [](float x) { return x; });
    check(AV::AudioCommonFormat::pcmFormatFloat64, interleaved,
          [](float x) { return static_cast<double>(x); });
    check(AV::AudioCommonFormat::pcmFormatInt16, interleaved,
          [](float x) { return asSixteenBit(std::span(&x, 1)).front(); });
    check(AV::AudioCommonFormat::pcmFormatInt32, interleaved, [](float x) {
      return static_cast<std::int32_t>(asSixteenBit(std::span(&x, 1)).front()) * 65536;
    });
  }
}

TEST_F(WavFiles, refuseBuffersOfAnotherFormatAndGoOn) {
  const auto path = folder_ / "a.wav";
  auto file = openFile(framework_, path, wavSettings(noise(1)));
  for (const auto& description : {floatDescription(44100, 2), floatDescription(48000, 1)}) {
    const auto buffer = framework_.makePCMBuffer(framework_.makeFormat(description), 10);
    buffer->setFrameLength(10);
    const auto error = file->write(*buffer);
    ASSERT_TRUE(error);
    EXPECT_NE(error->localizedDescription.find("a.wav"), std::string::npos);
  }
  const Audio audio = noise(10);
  EXPECT_TRUE(deliver(framework_, *file, audio).empty());
  file.reset();
  EXPECT_EQ(readWav(path).samples, asSixteenBit(audio.samples));
}

}  // namespace
}  // namespace audrel::linuxos::test
