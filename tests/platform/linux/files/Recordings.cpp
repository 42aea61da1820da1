#include "tests/platform/linux/files/Recordings.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <stdexcept>

namespace audrel::linuxos::test {
Audio noise(std::size_t frames, std::uint32_t sampleRate, std::uint32_t channels) {
  Audio audio{sampleRate, channels, std::vector<float>(frames * channels)};
  std::minstd_rand random(channels + sampleRate);
  std::uniform_real_distribution<float> uniform(-1, 1);
  std::vector<float> state(channels);
  for (std::size_t frame = 0; frame < frames; ++frame) {
    for (std::uint32_t channel = 0; channel < channels; ++channel) {
      state[channel] += 0.15F * (uniform(random) - state[channel]);  // mostly low frequencies
      audio.samples[frame * channels + channel] = state[channel];
    }
  }
  return audio;
}

Audio impulse(std::size_t frames, std::size_t position) {
  Audio audio{48000, 2, std::vector<float>(frames * 2)};
  audio.samples.at(position * 2) = 0.9F;
  audio.samples.at(position * 2 + 1) = 0.9F;
  return audio;
}

CA::AudioStreamBasicDescription floatDescription(double sampleRate, std::uint32_t channels) {
  CA::AudioStreamBasicDescription description;
  description.mSampleRate = sampleRate;
  description.mFormatID = CA::kAudioFormatLinearPCM;
  description.mFormatFlags = CA::kAudioFormatFlagIsFloat | CA::kAudioFormatFlagIsPacked;
  description.mBytesPerPacket = 4 * channels;
  description.mFramesPerPacket = 1;
  description.mBytesPerFrame = 4 * channels;
  description.mChannelsPerFrame = channels;
  description.mBitsPerChannel = 32;
  return description;
}

AV::Settings m4aSettings(const Audio& audio, std::int64_t bitRate) {
  return {{AV::AVFormatIDKey, CA::kAudioFormatMPEG4AAC},
          {AV::AVSampleRateKey, static_cast<double>(audio.sampleRate)},
          {AV::AVNumberOfChannelsKey, std::int64_t{audio.channels}},
          {AV::AVEncoderBitRateKey, bitRate},
          {AV::AVEncoderAudioQualityKey, AV::AVAudioQualityHigh}};
}

AV::Settings wavSettings(const Audio& audio) {
  return {{AV::AVFormatIDKey, CA::kAudioFormatLinearPCM},
          {AV::AVSampleRateKey, static_cast<double>(audio.sampleRate)},
          {AV::AVNumberOfChannelsKey, std::int64_t{audio.channels}},
          {AV::AVLinearPCMBitDepthKey, std::int64_t{16}},
          {AV::AVLinearPCMIsBigEndianKey, false},
          {AV::AVLinearPCMIsFloatKey, false},
          {AV::AVLinearPCMIsNonInterleaved, false}};
}

std::shared_ptr<AV::AudioFile> openFile(AudioFramework& framework,
                                        const std::filesystem::path& path,
                                        const AV::Settings& settings) {
  NS::Error error;
  auto file = framework.openForWriting(path, settings, AV::AudioCommonFormat::pcmFormatFloat32,
                                       true, &error);
  if (!file) {
    throw std::runtime_error(error.localizedDescription);
  }
  return file;
}

std::vector<NS::Error> deliver(AudioFramework& framework, AV::AudioFile& file, const Audio& audio,
                               const std::function<void(std::size_t)>& beforeEach) {
  const auto format = framework.makeFormat(floatDescription(audio.sampleRate, audio.channels));
  std::vector<NS::Error> errors;
  std::size_t length = 1024;
  for (std::size_t done = 0; done < audio.frames();) {
    length = 900 + (length * 7 + 13) % 250;
    const std::size_t count = std::min(length, audio.frames() - done);
    const auto buffer = framework.makePCMBuffer(format, static_cast<std::uint32_t>(count));
    buffer->setFrameLength(static_cast<std::uint32_t>(count));
    std::memcpy(buffer->mutableAudioBufferList()->mBuffers[0].mData, audio.from(done).data(),
                count * audio.channels * sizeof(float));
    done += count;
    if (beforeEach) {
      beforeEach(done);
    }
    if (auto error = file.write(*buffer)) {
      errors.push_back(*error);
    }
  }
  return errors;
}

WavContents readWav(const std::filesystem::path& path) {
  SF_INFO info{};
  SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
  if (file == nullptr) {
    throw std::runtime_error(std::string("libsndfile: ") + sf_strerror(nullptr));
  }
  WavContents contents{info.samplerate, info.channels, {}};
  contents.samples.resize(static_cast<std::size_t>(info.frames * info.channels));
  const sf_count_t read = sf_readf_short(file, contents.samples.data(), info.frames);
  sf_close(file);
  if (read != info.frames || (info.format & SF_FORMAT_SUBMASK) != SF_FORMAT_PCM_16) {
    throw std::runtime_error("libsndfile: other contents than its header tells");
  }
  return contents;
}

std::vector<std::int16_t> asSixteenBit(std::span<const float> samples) {
  std::vector<std::int16_t> result;
  result.reserve(samples.size());
  for (const float sample : samples) {
    const double scaled = std::nearbyint(static_cast<double>(sample) * 32768.0);
    result.push_back(static_cast<std::int16_t>(std::min(std::max(scaled, -32768.0), 32767.0)));
  }
  return result;
}

int lag(const Audio& original, std::span<const float> decoded) {
  constexpr std::size_t range = 1100;
  constexpr std::size_t window = 4096;
  const std::size_t stride = original.channels;
  std::size_t best = 0;
  float bestSum = 0;
  for (std::size_t shift = 0; shift <= 2 * range; ++shift) {
    float sum = 0;
    for (std::size_t i = 0; i < window; ++i) {
      sum += decoded[(i + shift) * stride] * original.samples[(i + range) * stride];
    }
    if (sum > bestSum) {
      bestSum = sum;
      best = shift;
    }
  }
  return static_cast<int>(best) - static_cast<int>(range);
}

double errorRatio(const Audio& original, std::span<const float> decoded) {
  double difference = 0;
  double energy = 0;
  for (std::size_t i = 0; i < std::min(original.samples.size(), decoded.size()); ++i) {
    const double sample = static_cast<double>(original.samples[i]);
    const double error = static_cast<double>(decoded[i]) - sample;
    difference += error * error;
    energy += sample * sample;
  }
  return energy > 0 ? difference / energy : 0;
}

std::filesystem::path FileTest::record(const std::string& name, const Audio& audio,
                                       const AV::Settings& settings) {
  const auto path = folder_ / name;
  const auto file = openFile(framework_, path, settings);
  EXPECT_TRUE(deliver(framework_, *file, audio).empty());
  return path;
}

}  // namespace audrel::linuxos::test
