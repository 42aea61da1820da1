// M4A files as others read them.

#include <algorithm>
#include <cmath>
#include <fstream>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace audrel::linuxos::test {
namespace {

class M4aFiles : public FileTest {
 protected:
  std::filesystem::path record(const Audio& audio, std::int64_t bitRate = 256'000) {
    return FileTest::record(std::to_string(++count_) + ".m4a", audio, m4aSettings(audio, bitRate));
  }

  int count_ = 0;
};

std::uint64_t nanoseconds(std::uint64_t frames) {
  return frames * 1'000'000'000 / 48000;
}

TEST_F(M4aFiles, areWhatFFmpegMakesWithoutIntensityStereoAndNoiseSubstitution) {
  const Audio audio = noise(48'000);
  const auto bytes = std::as_bytes(std::span(audio.samples));
  std::ofstream(folder_ / "raw", std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  const auto expected = folder_ / "expected.m4a";
  const ToolResult result = runTool(
      {"ffmpeg",   "-v", "warning",       "-nostdin", "-f",  "f32le", "-ar",  "48000",   "-ac",
       "2",        "-i", folder_ / "raw", "-c:a",     "aac", "-b:a",  "256k", "-aac_is", "0",
       "-aac_pns", "0",  expected});
  ASSERT_EQ(result.exitCode, 0) << result.errors;

  auto decoded = decode(record(audio));
  auto expectedSamples = decode(expected);
  ASSERT_GE(decoded.size(), audio.samples.size());
  ASSERT_GE(expectedSamples.size(), audio.samples.size());
  decoded.resize(audio.samples.size());
  expectedSamples.resize(audio.samples.size());
  EXPECT_TRUE(decoded == expectedSamples);
}

TEST_F(M4aFiles, areTheSameWhateverTheQualityKeySays) {
  const Audio audio = noise(48'000);
  std::vector<std::vector<float>> decoded;
  for (const std::int64_t quality : {std::int64_t{0}, AV::AVAudioQualityHigh}) {
    auto settings = m4aSettings(audio);
    settings[AV::AVEncoderAudioQualityKey] = quality;
    decoded.push_back(decode(FileTest::record(std::to_string(quality), audio, settings)));
  }
  ASSERT_GE(decoded[0].size(), audio.samples.size());
  EXPECT_EQ(decoded[0], decoded[1]);
}

TEST_F(M4aFiles, areExactToTheFrameWhateverTheirLength) {
  for (const std::size_t frames : {1U, 1023U, 1024U, 1025U, 2048U, 22'529U, 48'000U, 144'001U}) {
    const Audio audio = noise(frames);
    const auto path = record(audio);

    const Probe probed = probe(path);
    EXPECT_EQ(probed.codec, "aac");
    EXPECT_EQ(probed.sampleRate, 48000);
    EXPECT_EQ(probed.channels, 2);
    EXPECT_EQ(probed.start, 0);
    EXPECT_EQ(probed.duration, frames);

    const DemuxedSegment segment = demuxWithGStreamer(path);
    EXPECT_EQ(segment.startNanoseconds, nanoseconds(1024));
    EXPECT_EQ(segment.stopNanoseconds, nanoseconds(1024) + nanoseconds(frames));

    const auto decoded = decode(path);
    EXPECT_GE(decoded.size() / 2, frames);
    EXPECT_LT(decoded.size() / 2, frames + 1024);
    if (frames > 7000) {
      EXPECT_LT(errorRatio(audio, decoded), 0.1) << frames;
      EXPECT_EQ(lag(audio, decoded), 0);
    }
  }
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(M4aFiles, endWithTheRecordingEvenForThoseWhoIgnoreTheEditList) {
  const ToolResult result =
      runTool({"ffprobe", "-v", "error", "-ignore_editlist", "1", "-show_entries",
               "packet=pts,duration", "-of", "csv=p=0", record(noise(48'000)).string()});
  EXPECT_TRUE(result.output.ends_with("\n48128,896\n")) << result.output;
}

TEST_F(M4aFiles, withoutAFrameAreValidToo) {
  const auto path = record(noise(0));
  const Probe probed = probe(path);
  EXPECT_EQ(probed.codec, "aac");
  EXPECT_EQ(probed.sampleRate, 48000);
  EXPECT_EQ(probed.channels, 2);
  EXPECT_EQ(probed.duration, 0);
  EXPECT_TRUE(decode(path).empty());
}

TEST_F(M4aFiles, havePlainContentsWithoutFragments) {
  const ToolResult result = runTool({"ffprobe", "-v", "trace", record(noise(60'000)).string()});
  EXPECT_NE(result.errors.find("type:'moov'"), std::string::npos);
  EXPECT_EQ(result.errors.find("type:'moof'"), std::string::npos);
  EXPECT_EQ(result.errors.find("type:'mvex'"), std::string::npos);
}

TEST_F(M4aFiles, beginWithTheFirstFrame) {
  for (const std::size_t position : {0U, 1U, 700U, 5000U}) {
    const auto decoded = decode(record(impulse(10'000, position)));
    const auto loudest =
        std::ranges::max_element(decoded, {}, [](float sample) { return std::abs(sample); });
    EXPECT_EQ(static_cast<std::size_t>(loudest - decoded.begin()) / 2, position);
  }
}

TEST_F(M4aFiles, seekToTheFrame) {
  const Audio audio = noise(200'000);
  const auto path = record(audio);
  for (const double seconds : {0.1, 1.0, 2.5, 3.9}) {
    const auto first = static_cast<std::size_t>(std::lround(seconds * 48000));
    const auto decoded = decode(path, seconds);
    const auto rest = audio.from(first);
    const Audio expected{48000, 2, {rest.begin(), rest.end()}};
    EXPECT_EQ(lag(expected, decoded), 0) << seconds;
    EXPECT_GE(decoded.size(), expected.samples.size());
    EXPECT_LT(decoded.size(), expected.samples.size() + 2048);
  }
}

TEST_F(M4aFiles, haveTheChannelsAndRatesOfAac) {
  for (const std::uint32_t channels : {1U, 2U, 3U, 4U, 5U, 6U, 8U}) {
    const Audio audio = noise(20'000, 44100, channels);
    const auto path = record(audio, 128'000 * channels);
    const Probe probed = probe(path);
    EXPECT_EQ(probed.channels, channels);
    EXPECT_EQ(probed.sampleRate, 44100);
    EXPECT_EQ(probed.duration, 20'000);
    EXPECT_LT(errorRatio(audio, decode(path)), 0.2) << channels;
  }
  for (const std::uint32_t rate : {7350U, 8000U, 11'025U, 16'000U, 88'200U, 96'000U}) {
    const auto path = record(noise(20'000, rate));
    const Probe probed = probe(path);
    EXPECT_EQ(probed.sampleRate, rate);
    EXPECT_EQ(probed.duration, 20'000);
  }
}

TEST_F(M4aFiles, opensWithTheNearestBitRateThatThereIs) {
  const Audio audio = noise(30'000, 8000, 1);
  for (const std::int64_t bitRate : {std::int64_t{0}, std::int64_t{1}, std::int64_t{10'000'000}}) {
    EXPECT_EQ(probe(record(audio, bitRate)).duration, 30'000);
  }
}

TEST_F(M4aFiles, followTheBitRateOfTheSettings) {
  const Audio audio = noise(240'000);
  const auto small = std::filesystem::file_size(record(audio, 64'000));
  const auto large = std::filesystem::file_size(record(audio, 256'000));
  EXPECT_NEAR(static_cast<double>(small), 5 * 64'000 / 8.0, 8000);
  EXPECT_NEAR(static_cast<double>(large), 5 * 256'000 / 8.0, 24'000);
}

TEST_F(M4aFiles, surviveSamplesThatAreNoNumbersAndAbsurdlyLoudOnes) {
  Audio audio = noise(30'000);
  for (std::size_t i = 20'000; i < 40'000; ++i) {
    audio.samples[i] = i % 3 == 0 ? std::nanf("") : (i % 2 == 0 ? 1e30F : -INFINITY);
  }
  const auto path = record(audio);  // expects no error
  EXPECT_EQ(probe(path).duration, 30'000);
  for (const float sample : decode(path)) {
    ASSERT_TRUE(std::isfinite(sample));
  }
}

TEST_F(M4aFiles, writeNothingToStandardError) {
  testing::internal::CaptureStderr();
  record(noise(30'000));
  record(noise(30'000, 8000, 1), 10'000'000);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace audrel::linuxos::test
