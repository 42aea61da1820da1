#include "platform/macos/AudioFramework.h"

#include <thread>

#include "platform/macos/Dispatch.h"
#include "tests/macos/execution/MacTest.h"

namespace audrel::macos {
namespace {

constexpr CA::AudioStreamBasicDescription floatStereo = {
    48000,
    CA::kAudioFormatLinearPCM,
    CA::kAudioFormatFlagIsFloat | CA::kAudioFormatFlagIsPacked,
    8,
    1,
    8,
    2,
    32,
    0};

constexpr const char* notCompressed =
    "required condition is false: !isCompressedFormat(format.streamDescription)";

class AudioFrameworkTest : public MacTest {
 protected:
  std::shared_ptr<AV::AudioFile> open() {
    return framework.openForWriting("/Users/test/a b.wav", {},
                                    AV::AudioCommonFormat::pcmFormatFloat32, true, &error);
  }

  std::unique_ptr<AV::PCMBuffer> buffer(std::uint32_t frames) {
    auto buffer = framework.makePCMBuffer(framework.makeFormat(floatStereo), frames);
    buffer->setFrameLength(frames);
    return buffer;
  }

  AudioFramework framework;
  NS::Error error;
};

TEST_F(AudioFrameworkTest, aBufferHasTheFramesThatItWasGivenAndLookingAtTheListChangesNoLength) {
  const auto file = open();
  const auto made = framework.makePCMBuffer(framework.makeFormat(floatStereo), 16);
  EXPECT_EQ(made->frameLength(), 0U);
  file->write(*made);
  for (const std::uint32_t frames : {0U, 10U}) {
    made->setFrameLength(frames);
    EXPECT_EQ(made->mutableAudioBufferList()->mBuffers[0].mDataByteSize, 8 * frames);
    EXPECT_EQ(made->frameLength(), frames);
    file->write(*made);
  }
  EXPECT_EQ(mac().files.front().writes, (std::vector<std::uint32_t>{0, 0, 10}));
  EXPECT_EQ(mac().files.front().bytes.size(), 80U);
}

TEST_F(AudioFrameworkTest, buffersAreMadeOnAThreadWithoutAPool) {
  const auto format = framework.makeFormat(floatStereo);
  std::thread([&] { framework.makePCMBuffer(format, 16)->setFrameLength(16); }).join();
}

TEST_F(AudioFrameworkTest, aFileThatCannotBeOpenedSaysWhy) {
  mac().openFails = {"com.example", -54, "The disk is \u201Cfull\u201D."};
  EXPECT_EQ(open(), nullptr);
  EXPECT_EQ(error, (NS::Error{"com.example", -54, "The disk is \u201Cfull\u201D."}));
}

TEST_F(AudioFrameworkTest, aFormatForWhichTheFrameworkRaisesAnExceptionIsNone) {
  mac().raising["AVAudioFormat.initWithStreamDescription:"] = notCompressed;
  EXPECT_EQ(framework.makeFormat(floatStereo), nullptr);
}

// On the IO thread nothing else would catch it, and no pool is there.
TEST_F(AudioFrameworkTest, aBufferForWhichTheFrameworkRaisesAnExceptionIsNone) {
  const auto format = framework.makeFormat(floatStereo);
  mac().raising["AVAudioPCMBuffer.initWithPCMFormat:frameCapacity:"] = notCompressed;
  std::thread([&] { EXPECT_EQ(framework.makePCMBuffer(format, 16), nullptr); }).join();
}

TEST_F(AudioFrameworkTest, anExceptionRaisedWhileAFileIsOpenedSaysWhy) {
  auto& raising =
      mac().raising["AVAudioFile.initForWriting:settings:commonFormat:interleaved:error:"];
  raising = notCompressed;
  EXPECT_EQ(open(), nullptr);
  EXPECT_EQ(error, (NS::Error{"com.apple.coreaudio.avfaudio", 0, notCompressed}));
  raising = std::nullopt;
  EXPECT_EQ(open(), nullptr);
  EXPECT_EQ(error,
            (NS::Error{"com.apple.coreaudio.avfaudio", 0, "The audio framework gave no reason."}));
}

TEST_F(AudioFrameworkTest, anExceptionRaisedByAWriteSaysWhyAndLeavesTheFileOpen) {
  const auto file = open();
  const auto frames = buffer(4);
  mac().raising["AVAudioFile.writeFromBuffer:error:"] = notCompressed;
  EXPECT_EQ(file->write(*frames), (NS::Error{"com.apple.coreaudio.avfaudio", 0, notCompressed}));
  mac().raising.clear();
  EXPECT_EQ(file->write(*frames), std::nullopt);
  EXPECT_EQ(mac().files.front().writes, (std::vector<std::uint32_t>{4}));
}

// Though the framework leaves references of its own in the caller's pool.
TEST_F(AudioFrameworkTest, aFileIsClosedWhenItsLastReferenceGoesInWhicheverPool) {
  @autoreleasepool {
    auto file = open();
    const auto frames = buffer(4);
    file->write(*frames);
    EXPECT_TRUE(mac().files.front().isOpen);
    file.reset();
    EXPECT_FALSE(mac().files.front().isOpen);
    EXPECT_EQ(objcruntime::liveObjectsOf("FakeFilePart"), 0U);
  }
}

TEST_F(AudioFrameworkTest, aFileDroppedOnAQueueIsClosedWhenTheQueueWasWaitedFor) {
  @autoreleasepool {
    auto file = open();
    const auto queue = Dispatch().makeQueue("writer", dispatch::QualityOfService::userInitiated);
    queue->sync([&file] { file = nullptr; });
    EXPECT_FALSE(mac().files.front().isOpen);
  }
}

}  // namespace
}  // namespace audrel::macos
