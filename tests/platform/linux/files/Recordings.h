#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/AVFAudio.h"
#include "platform/linux/files/AudioFramework.h"
#include "tests/support/KeptLog.h"
#include "tests/support/TemporaryFolder.h"

/// What the tests of files share: signals, ways to record them, and ways to compare.
namespace audrel::linuxos::test {

/// Audio, channels interleaved.
struct Audio {
  std::uint32_t sampleRate = 48000;
  std::uint32_t channels = 2;
  std::vector<float> samples;

  std::size_t frames() const { return samples.size() / channels; }
  std::span<const float> from(std::size_t frame) const {
    return std::span(samples).subspan(frame * channels);
  }
};

/// Low noise that never repeats, so that a shift in time shows, different in each channel.
Audio noise(std::size_t frames, std::uint32_t sampleRate = 48000, std::uint32_t channels = 2);

/// Digital silence but one sample of 0.9 in all channels.
Audio impulse(std::size_t frames, std::size_t position);

CA::AudioStreamBasicDescription floatDescription(double sampleRate, std::uint32_t channels);
AV::Settings m4aSettings(const Audio& audio, std::int64_t bitRate = 256'000);
AV::Settings wavSettings(const Audio& audio);

/// A file for interleaved floats. Throws the error's sentence when it cannot be opened.
std::shared_ptr<AV::AudioFile> openFile(AudioFramework& framework,
                                        const std::filesystem::path& path,
                                        const AV::Settings& settings);

/// Hands `audio` over in buffers of changing lengths about 1000 frames; the errors of all writes.
/// `beforeEach` is called before each write, with the frames that are handed over after it.
std::vector<NS::Error> deliver(AudioFramework& framework, AV::AudioFile& file, const Audio& audio,
                               const std::function<void(std::size_t)>& beforeEach = {});

/// The samples of a 16-bit WAV file as libsndfile reads them. Throws when it can't.
struct WavContents {
  int sampleRate = 0;
  int channels = 0;
  std::vector<std::int16_t> samples;
};
WavContents readWav(const std::filesystem::path& path);

/// Samples as they have to stand in a WAV file, computed in another way than the file's.
std::vector<std::int16_t> asSixteenBit(std::span<const float> samples);

/// By how many frames `decoded` lags behind `original`, searched within ±1100; both need 6300.
int lag(const Audio& original, std::span<const float> decoded);

/// The energy of the difference over that of the original, over what both have.
double errorRatio(const Audio& original, std::span<const float> decoded);

/// A folder for recordings, and the framework that makes them.
class FileTest : public testing::Test {
 protected:
  /// The file of a recording of `audio`, which has to succeed.
  std::filesystem::path record(const std::string& name, const Audio& audio,
                               const AV::Settings& settings);

  support::TemporaryFolder folder_;
  support::KeptLog log_;
  AudioFramework framework_ = AudioFramework(log_);
};

}  // namespace audrel::linuxos::test
