#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "engine/WriterSettings.h"
#include "platform/AVFAudio.h"
#include "tests/contract/AudioDescriptions.h"
#include "tests/contract/RecordedFiles.h"
#include "tests/support/TemporaryFolder.h"

/// What every platform's files keep, with the settings that a recording has. An implementation is a
/// type with
///   AV::AudioFramework& audioFramework();
namespace audrel::contract {

/// The sample of `channel` in frame `frame`, as 16-bit integers have it.
inline int rampAt(std::uint32_t frame, std::uint32_t channel) {
  const int value = static_cast<int>(frame % 20001) - 10000;
  return channel == 0 ? value : -value;
}

template <typename Implementation>
class AudioFileContract : public testing::Test {
 protected:
  static constexpr std::uint32_t framesPerWrite = 480;

  std::shared_ptr<AV::AudioFile> open(const std::filesystem::path& path, RecordingFormat format) {
    return framework.openForWriting(path, writerSettings(format, *tapFormat),
                                    tapFormat->commonFormat(), tapFormat->isInterleaved(), &error);
  }

  /// Writes the ramps from frame `first` on.
  void writeRamps(AV::AudioFile& file, std::uint32_t first, std::uint32_t frames) {
    for (std::uint32_t at = first; at < first + frames; at += framesPerWrite) {
      const auto buffer = framework.makePCMBuffer(tapFormat, framesPerWrite);
      buffer->setFrameLength(framesPerWrite);
      auto* samples = static_cast<float*>(buffer->mutableAudioBufferList()->mBuffers[0].mData);
      for (std::uint32_t i = 0; i < framesPerWrite; ++i) {
        for (std::uint32_t channel = 0; channel < 2; ++channel) {
          samples[2 * i + channel] = static_cast<float>(rampAt(at + i, channel)) / 32768.0F;
        }
      }
      const auto failure = file.write(*buffer);
      ASSERT_EQ(failure, std::nullopt) << failure->localizedDescription;
    }
  }

  void expectRamps(const std::filesystem::path& path, std::uint32_t frames) {
    const WavFile wav = readWav(path);
    EXPECT_EQ(wav.channels, 2);
    EXPECT_EQ(wav.sampleRate, 48000U);
    ASSERT_EQ(wav.samples.size(), std::size_t{2} * frames);
    int worst = 0;
    for (std::uint32_t i = 0; i < 2 * frames; ++i) {
      worst = std::max(worst, std::abs(wav.samples[i] - rampAt(i / 2, i % 2)));
    }
    EXPECT_LE(worst, 1);
  }

  void expectRefusal(const std::filesystem::path& path, RecordingFormat format) {
    error = {};
    EXPECT_EQ(open(path, format), nullptr);
    EXPECT_NE(error.localizedDescription, "");
  }

  Implementation implementation;
  support::TemporaryFolder folder;
  NS::Error error;
  AV::AudioFramework& framework = implementation.audioFramework();
  std::shared_ptr<const AV::AudioFormat> tapFormat = framework.makeFormat(floatStereo());
};

TYPED_TEST_SUITE_P(AudioFileContract);

TYPED_TEST_P(AudioFileContract, aWavIsCompleteAsSoonAsItsLastReferenceIsGone) {
  const auto path = this->folder / "a recording.wav";
  auto file = this->open(path, RecordingFormat::wav);
  ASSERT_NE(file, nullptr) << this->error.localizedDescription;
  this->writeRamps(*file, 0, 47520);
  file.reset();
  this->expectRamps(path, 47520);
}

TYPED_TEST_P(AudioFileContract, anM4aIsCompleteAsSoonAsItsLastReferenceIsGone) {
  const auto path = this->folder / "a recording.m4a";
  auto file = this->open(path, RecordingFormat::m4a);
  ASSERT_NE(file, nullptr) << this->error.localizedDescription;
  this->writeRamps(*file, 0, 96000);
  file.reset();
  const M4aFile m4a = readM4a(path);
  // The encoder may count the frames in which it starts and ends.
  EXPECT_NEAR(m4a.seconds, 2.0, 0.1);
  EXPECT_GT(m4a.bytesOfPackets, 0U);
}

TYPED_TEST_P(AudioFileContract, aFileTakesAudioAsLongAsAnyReferenceIsLeft) {
  const auto path = this->folder / "a.wav";
  auto file = this->open(path, RecordingFormat::wav);
  ASSERT_NE(file, nullptr) << this->error.localizedDescription;
  auto other = file;
  this->writeRamps(*file, 0, 4800);
  file.reset();
  this->writeRamps(*other, 4800, 4800);
  other.reset();
  this->expectRamps(path, 9600);
}

TYPED_TEST_P(AudioFileContract, namesOfEveryLanguageAreKept) {
  const auto path = this->folder / "Grüße, 世界 \U0001F3A7.wav";
  auto file = this->open(path, RecordingFormat::wav);
  ASSERT_NE(file, nullptr) << this->error.localizedDescription;
  this->writeRamps(*file, 0, 480);
  file.reset();
  this->expectRamps(path, 480);
}

TYPED_TEST_P(AudioFileContract, aFileInAFolderThatIsNotThereIsAnErrorWithAReason) {
  this->expectRefusal(this->folder / "missing" / "a.wav", RecordingFormat::wav);
  this->expectRefusal(this->folder / "missing" / "a.m4a", RecordingFormat::m4a);
  std::error_code unknown;
  EXPECT_FALSE(std::filesystem::exists(this->folder / "missing", unknown));
}

TYPED_TEST_P(AudioFileContract, aFileOfAFoldersNameIsAnErrorWithAReason) {
  std::error_code unknown;
  std::filesystem::create_directory(this->folder / "a.wav", unknown);
  std::filesystem::create_directory(this->folder / "a.m4a", unknown);
  this->expectRefusal(this->folder / "a.wav", RecordingFormat::wav);
  this->expectRefusal(this->folder / "a.m4a", RecordingFormat::m4a);
  EXPECT_TRUE(std::filesystem::is_directory(this->folder / "a.wav", unknown));
  EXPECT_TRUE(std::filesystem::is_directory(this->folder / "a.m4a", unknown));
}

// Which of the two, the systems decide; it is told for whoever wants to know.
TYPED_TEST_P(AudioFileContract, aFileThatIsThereStaysOrIsReplacedWhole) {
  const auto path = this->folder / "a.wav";
  const std::string precious(100000, 'x');
  std::ofstream(path) << precious;
  auto file = this->open(path, RecordingFormat::wav);
  if (file == nullptr) {
    std::cout << "An existing file is refused: " << this->error.localizedDescription << '\n';
    EXPECT_NE(this->error.localizedDescription, "");
    std::ifstream kept(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), precious);
    return;
  }
  std::cout << "An existing file is replaced.\n";
  this->writeRamps(*file, 0, 480);
  file.reset();
  this->expectRamps(path, 480);
}

REGISTER_TYPED_TEST_SUITE_P(AudioFileContract, aWavIsCompleteAsSoonAsItsLastReferenceIsGone,
                            anM4aIsCompleteAsSoonAsItsLastReferenceIsGone,
                            aFileTakesAudioAsLongAsAnyReferenceIsLeft, namesOfEveryLanguageAreKept,
                            aFileInAFolderThatIsNotThereIsAnErrorWithAReason,
                            aFileOfAFoldersNameIsAnErrorWithAReason,
                            aFileThatIsThereStaysOrIsReplacedWhole);

}  // namespace audrel::contract
