#include "tests/platform/linux/pipewire/harness/RecordedFile.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <memory>
#include <string>

#include "tests/platform/linux/pipewire/harness/ToneReading.h"
#include "tests/platform/linux/pipewire/harness/Track.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::pwtest {

Audio readWav(const std::filesystem::path& path) {
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open(path.c_str(), SFM_READ, &info),
                                                         sf_close);
  if (!file || info.channels != 2 || info.samplerate != 48000) {
    return {};
  }
  Audio audio(2 * static_cast<std::size_t>(info.frames));
  EXPECT_EQ(sf_readf_float(file.get(), audio.data(), info.frames), info.frames);
  return audio;
}

Audio readM4a(const std::filesystem::path& path) {
  const support::TemporaryFolder folder;
  const auto decoded = folder.path() / "decoded.wav";
  const auto decoder = support::ChildProcess::start(
      {.arguments = {"ffmpeg", "-nostdin", "-v", "error", "-i", path, "-c:a", "pcm_f32le", decoded},
       .environment = {}});
  return decoder && decoder->waitForEnd() == 0 ? readWav(decoded) : Audio();
}

void expectWholeTrack(const std::filesystem::path& wav, std::uint32_t stream,
                      std::uint64_t playedFrames) {
  Audio audio = readWav(wav);
  removeHalfLinkedStarts(audio);
  std::string problem;
  const auto track = onlyTrack(audio, &problem);
  ASSERT_TRUE(track) << wav << ": " << problem;
  EXPECT_EQ(track->first.stream, stream);
  EXPECT_LE(track->begin, longestLead);
  EXPECT_EQ(track->silent, 0U) << problem;
  EXPECT_EQ(track->end, framesOf(audio)) << problem;
  EXPECT_GE(framesOf(audio) + onTheWay, playedFrames);
}

void expectUnbrokenTone(const Audio& audio, std::size_t begin, double frequency, double tolerance) {
  constexpr double level = 0.5;  // as the player plays it
  for (const Channel channel : {Channel::left, Channel::right}) {
    const ToneReading tone = readTone(audio, channel, begin, 48000, frequency);
    EXPECT_NEAR(tone.frequency, frequency, 0.01);
    EXPECT_NEAR(tone.lowestLevel, level, tolerance);
    EXPECT_NEAR(tone.highestLevel, level, tolerance);
    EXPECT_LT(tone.phaseError, 0.01) << "cycles; a break in the tone shows here";
  }
}

}  // namespace audrel::pwtest
