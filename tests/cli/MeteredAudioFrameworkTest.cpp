#include "cli/MeteredAudioFramework.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "cli/RecordingMeter.h"
#include "tests/cli/FloatBuffer.h"
#include "tests/fakes/Journal.h"

namespace audrel::cli {
namespace {

using std::chrono::seconds;

class MeteredFile : public testing::Test {
 protected:
  std::shared_ptr<AV::AudioFile> open(std::optional<MeteredAudioFramework::Limit> limit) {
    framework_.emplace(audio_, meter_, std::move(limit));
    NS::Error error;
    return framework_->openForWriting("x.wav", {}, AV::AudioCommonFormat::pcmFormatFloat32, true,
                                      &error);
  }

  std::unique_ptr<AV::PCMBuffer> buffer(const std::vector<float>& samples) {
    return floatBuffer(audio_, samples);
  }

  std::unique_ptr<AV::PCMBuffer> frames(std::size_t count) {
    return buffer(std::vector<float>(count * 2, 0.5F));
  }

  std::uint64_t framesInFile() const {
    std::uint64_t total = 0;
    for (const auto& write : audio_.files.back()->writes) {
      total += write.frames;
    }
    return total;
  }

  fakes::Journal journal_;
  fakes::FakeAudio audio_{journal_};
  RecordingMeter meter_;
  std::optional<MeteredAudioFramework> framework_;
};

TEST_F(MeteredFile, writesEveryBufferAsItIsAndCountsItsFrames) {
  const auto file = open(std::nullopt);
  EXPECT_EQ(file->write(*buffer({0.1F, 0.2F, 0.3F, 0.4F})), std::nullopt);
  EXPECT_EQ(file->write(*frames(512)), std::nullopt);
  EXPECT_EQ(framesInFile(), 514U);
  EXPECT_EQ(meter_.total().frames, 514U);
  EXPECT_EQ(meter_.total().sampleRate, 48000);
  EXPECT_DOUBLE_EQ(meter_.total().seconds(), 514 / 48000.0);
}

TEST_F(MeteredFile, measuresTheLargestMagnitude) {
  const auto file = open(std::nullopt);
  EXPECT_EQ(meter_.total().peak, std::nullopt);
  file->write(*buffer({0.1F, -0.75F}));
  file->write(*buffer({0.25F, 0.0F}));
  EXPECT_EQ(meter_.total().peak, 0.75F);
}

TEST_F(MeteredFile, recentPeakIsOfWhatCameSinceItWasAsked) {
  const auto file = open(std::nullopt);
  EXPECT_EQ(meter_.takeRecentPeak(), std::nullopt);
  file->write(*buffer({0.1F, -0.75F}));
  EXPECT_EQ(meter_.takeRecentPeak(), 0.75F);
  EXPECT_EQ(meter_.takeRecentPeak(), std::nullopt);
  file->write(*buffer({0.25F, 0.0F}));
  EXPECT_EQ(meter_.takeRecentPeak(), 0.25F);
}

TEST_F(MeteredFile, isDigitalSilenceOnlyWhenEverySampleIsZero) {
  const auto file = open(std::nullopt);
  EXPECT_FALSE(meter_.total().isDigitalSilence());
  file->write(*buffer({0.0F, -0.0F, 0.0F, 0.0F}));
  EXPECT_TRUE(meter_.total().isDigitalSilence());
  file->write(*buffer({0.0F, 1e-9F}));
  EXPECT_FALSE(meter_.total().isDigitalSilence());
}

TEST_F(MeteredFile, endsExactlyAtItsLengthAndSaysSoOnce) {
  int reached = 0;
  const auto file = open(MeteredAudioFramework::Limit{seconds(1), [&] { ++reached; }});
  for (int i = 0; i < 93; ++i) {
    file->write(*frames(512));
  }
  EXPECT_EQ(framesInFile(), 47616U);
  EXPECT_EQ(reached, 0);
  file->write(*frames(512));  // 384 are left
  EXPECT_EQ(framesInFile(), 48000U);
  EXPECT_EQ(reached, 1);
  EXPECT_EQ(file->write(*frames(512)), std::nullopt);
  EXPECT_EQ(framesInFile(), 48000U);
  EXPECT_EQ(meter_.total().frames, 48000U);
  EXPECT_EQ(reached, 1);
}

TEST_F(MeteredFile, endsAfterAPartOfASecondAndNeverBeforeOneFrame) {
  int reached = 0;
  const auto half =
      open(MeteredAudioFramework::Limit{std::chrono::milliseconds(500), [&] { ++reached; }});
  half->write(*frames(48000));
  EXPECT_EQ(framesInFile(), 24000U);
  const auto shortest =
      open(MeteredAudioFramework::Limit{std::chrono::microseconds(1), [&] { ++reached; }});
  shortest->write(*frames(512));
  EXPECT_EQ(framesInFile(), 1U);
  EXPECT_EQ(reached, 2);
}

TEST_F(MeteredFile, endsWithABufferThatFitsExactly) {
  int reached = 0;
  const auto file = open(MeteredAudioFramework::Limit{seconds(1), [&] { ++reached; }});
  file->write(*frames(47999));
  EXPECT_EQ(reached, 0);
  file->write(*frames(1));
  EXPECT_EQ(reached, 1);
  EXPECT_EQ(framesInFile(), 48000U);
}

TEST_F(MeteredFile, measuresOnlyWhatIsBeforeItsEnd) {
  const auto file = open(MeteredAudioFramework::Limit{seconds(1), [] {}});
  file->write(*frames(47999));
  file->write(*buffer({0.5F, 0.5F, 1.0F, 1.0F}));
  EXPECT_EQ(meter_.total().peak, 0.5F);
}

TEST_F(MeteredFile, passesFailedWritesOnAndRemembersTheFirst) {
  const auto file = open(std::nullopt);
  file->write(*frames(10));
  audio_.writeError = NS::Error{"domain", 28, "The disk is full."};
  EXPECT_EQ(file->write(*frames(10)), audio_.writeError);
  audio_.writeError = NS::Error{"domain", 5, "The disk is broken."};
  EXPECT_EQ(file->write(*frames(10)), audio_.writeError);
  audio_.writeError.reset();
  EXPECT_EQ(file->write(*frames(10)), std::nullopt);
  EXPECT_EQ(meter_.total().failedWrites, 2U);
  EXPECT_EQ(meter_.total().firstFailure, "The disk is full.");
}

TEST_F(MeteredFile, itsLengthIsReachedEvenWhenNothingCanBeWritten) {
  int reached = 0;
  const auto file = open(MeteredAudioFramework::Limit{seconds(1), [&] { ++reached; }});
  audio_.writeError = NS::Error{"domain", 28, "The disk is full."};
  file->write(*frames(40000));
  file->write(*frames(40000));
  EXPECT_EQ(reached, 1);
}

TEST_F(MeteredFile, closesTheFileWithItself) {
  auto file = open(std::nullopt);
  EXPECT_TRUE(audio_.files.back()->isOpen);
  file.reset();
  EXPECT_FALSE(audio_.files.back()->isOpen);
}

TEST_F(MeteredFile, isNotMadeWhenTheFileCannotBeOpened) {
  audio_.openError = NS::Error{"domain", 17, "It exists."};
  MeteredAudioFramework framework(audio_, meter_, std::nullopt);
  NS::Error error;
  EXPECT_EQ(
      framework.openForWriting("x.wav", {}, AV::AudioCommonFormat::pcmFormatFloat32, true, &error),
      nullptr);
  EXPECT_EQ(error, *audio_.openError);
}

TEST_F(MeteredFile, isReadOnAnotherThreadWhileItIsFed) {
  const auto file = open(std::nullopt);
  const auto prepared = frames(64);
  std::thread writer([&] {
    for (int i = 0; i < 1000; ++i) {
      file->write(*prepared);
    }
  });
  std::uint64_t last = 0;
  while (last < 64000) {
    const auto now = meter_.total().frames;
    EXPECT_GE(now, last);
    last = now;
    meter_.takeRecentPeak();
    std::this_thread::yield();
  }
  writer.join();
}

TEST(PeakOf, takesTheLargestOfAllChannelsWhenTheyAreApart) {
  fakes::Journal journal;
  fakes::FakeAudio audio(journal);
  auto description = fakes::FakeHardware::floatStereo();
  description.mFormatFlags |= CA::kAudioFormatFlagIsNonInterleaved;
  description.mBytesPerFrame = sizeof(float);
  const auto buffer = audio.makePCMBuffer(audio.makeFormat(description), 4);
  buffer->setFrameLength(4);
  CA::AudioBuffer* const channels = buffer->mutableAudioBufferList()->mBuffers;
  static_cast<float*>(channels[0].mData)[3] = 0.25F;
  static_cast<float*>(channels[1].mData)[0] = -0.5F;
  EXPECT_EQ(peakOf(*buffer), 0.5F);
}

TEST(PeakOf, leavesOutSamplesThatAreNoNumbers) {
  fakes::Journal journal;
  fakes::FakeAudio audio(journal);
  EXPECT_EQ(peakOf(*floatBuffer(audio, {std::nanf(""), 0.25F})), 0.25F);
}

TEST(PeakOf, isNothingForSamplesThatAreNoFloats) {
  fakes::Journal journal;
  fakes::FakeAudio audio(journal);
  auto description = fakes::FakeHardware::floatStereo();
  description.mFormatFlags = CA::kAudioFormatFlagIsSignedInteger | CA::kAudioFormatFlagIsPacked;
  description.mBitsPerChannel = 16;
  const auto buffer = audio.makePCMBuffer(audio.makeFormat(description), 4);
  EXPECT_EQ(peakOf(*buffer), std::nullopt);
}

TEST(Decibels, areRelativeToFullScale) {
  EXPECT_EQ(decibels(0), std::nullopt);
  EXPECT_DOUBLE_EQ(decibels(1).value(), 0);
  EXPECT_NEAR(decibels(0.5F).value(), -6.0206, 1e-4);
  EXPECT_NEAR(decibels(2).value(), 6.0206, 1e-4);
  EXPECT_EQ(describePeak(0.5F), "-6.0 dBFS");
  EXPECT_EQ(describePeak(0), "silence");
}

}  // namespace
}  // namespace audrel::cli
