#include "cli/MeteredAudioFramework.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "cli/RecordingMeter.h"
#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/FakeHardware.h"

namespace audrel::cli {
namespace {

using fakes::FakeHardware;
using std::chrono::seconds;

class MeteredTest : public testing::Test {
 protected:
  std::unique_ptr<AV::PCMBuffer> make(const CA::AudioStreamBasicDescription& description,
                                      std::uint32_t frames) {
    auto buffer = audio_.makePCMBuffer(audio_.makeFormat(description), frames);
    buffer->setFrameLength(frames);
    return buffer;
  }

  /// A buffer of interleaved float stereo at 48 kHz that holds `samples`, two a frame.
  std::unique_ptr<AV::PCMBuffer> buffer(const std::vector<float>& samples) {
    auto made = make(FakeHardware::floatStereo(), static_cast<std::uint32_t>(samples.size() / 2));
    auto* const data = static_cast<float*>(made->mutableAudioBufferList()->mBuffers[0].mData);
    std::copy(samples.begin(), samples.end(), data);
    return made;
  }

  fakes::Journal journal_;
  fakes::FakeAudio audio_{journal_};
};

class MeteredFile : public MeteredTest {
 protected:
  std::shared_ptr<AV::AudioFile> open(std::optional<std::chrono::microseconds> length = {}) {
    std::optional<MeteredAudioFramework::Limit> limit;
    if (length) {
      limit = MeteredAudioFramework::Limit{*length, [this] { ++reached_; }};
    }
    framework_.emplace(audio_, meter_, limit);
    return framework_->openForWriting("x.wav", {}, AV::AudioCommonFormat::pcmFormatFloat32, true,
                                      &error_);
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

  RecordingMeter meter_;
  NS::Error error_;
  int reached_ = 0;  ///< how often the length was
  std::optional<MeteredAudioFramework> framework_;
};

TEST_F(MeteredFile, writesEveryBufferAsItIsAndCountsItsFrames) {
  const auto file = open();
  EXPECT_EQ(file->write(*buffer({0.1F, 0.2F, 0.3F, 0.4F})), std::nullopt);
  EXPECT_EQ(file->write(*frames(512)), std::nullopt);
  EXPECT_EQ(framesInFile(), 514U);
  EXPECT_EQ(meter_.total().frames, 514U);
  EXPECT_EQ(meter_.total().sampleRate, 48000);
  EXPECT_DOUBLE_EQ(meter_.total().secondsOf(meter_.total().frames), 514 / 48000.0);
}

TEST_F(MeteredFile, measuresTheLargestMagnitude) {
  const auto file = open();
  EXPECT_EQ(meter_.total().peak, std::nullopt);
  file->write(*buffer({0.1F, -0.75F}));
  file->write(*buffer({0.25F, 0.0F}));
  EXPECT_EQ(meter_.total().peak, 0.75F);
}

TEST_F(MeteredFile, recentPeakIsOfWhatCameSinceItWasAsked) {
  const auto file = open();
  EXPECT_EQ(meter_.takeRecentPeak(), std::nullopt);
  file->write(*buffer({0.1F, -0.75F}));
  EXPECT_EQ(meter_.takeRecentPeak(), 0.75F);
  EXPECT_EQ(meter_.takeRecentPeak(), std::nullopt);
  file->write(*buffer({0.25F, 0.0F}));
  EXPECT_EQ(meter_.takeRecentPeak(), 0.25F);
}

TEST_F(MeteredFile, isDigitalSilenceOnlyWhenEverySampleIsZero) {
  const auto file = open();
  EXPECT_FALSE(meter_.total().isDigitalSilence());
  file->write(*buffer({0.0F, -0.0F, 0.0F, 0.0F}));
  EXPECT_TRUE(meter_.total().isDigitalSilence());
  file->write(*buffer({0.0F, 1e-9F}));
  EXPECT_FALSE(meter_.total().isDigitalSilence());
}

TEST_F(MeteredFile, endsExactlyAtItsLengthAndSaysSoOnce) {
  const auto file = open(seconds(1));
  for (int i = 0; i < 93; ++i) {
    file->write(*frames(512));
  }
  EXPECT_EQ(framesInFile(), 47616U);
  EXPECT_EQ(reached_, 0);
  file->write(*frames(512));  // 384 are left
  EXPECT_EQ(framesInFile(), 48000U);
  EXPECT_EQ(reached_, 1);
  EXPECT_EQ(file->write(*frames(512)), std::nullopt);
  EXPECT_EQ(framesInFile(), 48000U);
  EXPECT_EQ(meter_.total().frames, 48000U);
  EXPECT_EQ(reached_, 1);
}

TEST_F(MeteredFile, endsAfterAPartOfASecondAndNeverBeforeOneFrame) {
  const auto half = open(std::chrono::milliseconds(500));
  half->write(*frames(48000));
  EXPECT_EQ(framesInFile(), 24000U);
  const auto shortest = open(std::chrono::microseconds(1));
  shortest->write(*frames(512));
  EXPECT_EQ(framesInFile(), 1U);
  EXPECT_EQ(reached_, 2);
}

TEST_F(MeteredFile, endsWithABufferThatFitsExactly) {
  const auto file = open(seconds(1));
  file->write(*frames(47999));
  EXPECT_EQ(reached_, 0);
  file->write(*frames(1));
  EXPECT_EQ(reached_, 1);
  EXPECT_EQ(framesInFile(), 48000U);
}

TEST_F(MeteredFile, measuresOnlyWhatIsBeforeItsEnd) {
  const auto file = open(seconds(1));
  file->write(*frames(47999));
  file->write(*buffer({0.5F, 0.5F, 1.0F, 1.0F}));
  EXPECT_EQ(meter_.total().peak, 0.5F);
}

TEST_F(MeteredFile, remembersWhatWasLouderThanFullScale) {
  const auto file = open();
  file->write(*buffer({1.0F, -1.0F}));
  EXPECT_FALSE(meter_.hasClipped());
  file->write(*buffer({0.0F, -1.01F}));
  file->write(*buffer({0.0F, 0.0F}));
  EXPECT_TRUE(meter_.hasClipped());
}

TEST_F(MeteredFile, passesFailedWritesOnAndRemembersTheFirst) {
  const auto file = open();
  file->write(*frames(10));
  audio_.writeError = NS::Error{"domain", 28, "The disk is full."};
  EXPECT_EQ(file->write(*frames(10)), audio_.writeError);
  audio_.writeError = NS::Error{"domain", 5, "The disk is broken."};
  EXPECT_EQ(file->write(*frames(10)), audio_.writeError);
  audio_.writeError.reset();
  EXPECT_EQ(file->write(*frames(10)), std::nullopt);
  EXPECT_EQ(meter_.total().failedWrites, 2U);
  EXPECT_EQ(meter_.total().failedFrames, 20U);
  EXPECT_EQ(meter_.total().firstFailure, "The disk is full.");
}

TEST_F(MeteredFile, tellsEachReasonWhyWritingFailsOnce) {
  const auto file = open();
  file->write(*frames(10));
  EXPECT_EQ(meter_.takeNewFailure(), std::nullopt);
  audio_.writeError = NS::Error{"domain", 28, "The disk is full."};
  file->write(*frames(10));
  file->write(*frames(10));
  EXPECT_EQ(meter_.takeNewFailure(), "The disk is full.");
  file->write(*frames(10));
  EXPECT_EQ(meter_.takeNewFailure(), std::nullopt);
  audio_.writeError = NS::Error{"domain", 5, "The disk is broken."};
  file->write(*frames(10));
  EXPECT_EQ(meter_.takeNewFailure(), "The disk is broken.");
}

TEST_F(MeteredFile, isFailingForASecondOfAudioAfterAFailedWrite) {
  const auto file = open();
  file->write(*frames(10));
  EXPECT_FALSE(meter_.isFailing());
  audio_.writeError = NS::Error{"domain", 28, "The disk is full."};
  file->write(*frames(10));
  EXPECT_TRUE(meter_.isFailing());
  audio_.writeError.reset();
  file->write(*frames(47999));
  EXPECT_TRUE(meter_.isFailing());
  file->write(*frames(1));
  EXPECT_FALSE(meter_.isFailing());
}

TEST_F(MeteredFile, itsLengthIsReachedEvenWhenNothingCanBeWritten) {
  const auto file = open(seconds(1));
  audio_.writeError = NS::Error{"domain", 28, "The disk is full."};
  file->write(*frames(40000));
  file->write(*frames(40000));
  EXPECT_EQ(reached_, 1);
}

TEST_F(MeteredFile, closesTheFileWithItself) {
  auto file = open();
  EXPECT_TRUE(audio_.files.back()->isOpen);
  file.reset();
  EXPECT_FALSE(audio_.files.back()->isOpen);
}

TEST_F(MeteredFile, isNotMadeWhenTheFileCannotBeOpened) {
  audio_.openError = NS::Error{"domain", 17, "It exists."};
  EXPECT_EQ(open(), nullptr);
  EXPECT_EQ(error_, *audio_.openError);
}

TEST_F(MeteredFile, isReadOnAnotherThreadWhileItIsFed) {
  const auto file = open();
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

using PeakOf = MeteredTest;

TEST_F(PeakOf, takesTheLargestOfAllChannelsWhenTheyAreApart) {
  auto description = FakeHardware::floatStereo();
  description.mFormatFlags |= CA::kAudioFormatFlagIsNonInterleaved;
  description.mBytesPerFrame = sizeof(float);
  const auto apart = make(description, 4);
  CA::AudioBuffer* const channels = apart->mutableAudioBufferList()->mBuffers;
  static_cast<float*>(channels[0].mData)[3] = 0.25F;
  static_cast<float*>(channels[1].mData)[0] = -0.5F;
  EXPECT_EQ(peakOf(*apart), 0.5F);
}

TEST_F(PeakOf, leavesOutSamplesThatAreNoNumbers) {
  EXPECT_EQ(peakOf(*buffer({std::nanf(""), 0.25F})), 0.25F);
}

TEST_F(PeakOf, isNothingForSamplesThatAreNoFloats) {
  auto description = FakeHardware::floatStereo();
  description.mFormatFlags = CA::kAudioFormatFlagIsSignedInteger | CA::kAudioFormatFlagIsPacked;
  description.mBitsPerChannel = 16;
  EXPECT_EQ(peakOf(*make(description, 4)), std::nullopt);
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
