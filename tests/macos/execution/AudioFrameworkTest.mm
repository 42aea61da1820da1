#include "platform/macos/AudioFramework.h"

#include <cstring>
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
  std::shared_ptr<AV::AudioFile> open(const AV::Settings& settings = {}) {
    return framework.openForWriting("/Users/test/a b.wav", settings,
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

TEST_F(AudioFrameworkTest, aFormatTellsWhatItWasMadeFrom) {
  const auto format = framework.makeFormat(floatStereo);
  EXPECT_EQ(format->streamDescription(), floatStereo);
  EXPECT_EQ(format->sampleRate(), 48000);
  EXPECT_EQ(format->channelCount(), 2U);
  EXPECT_TRUE(format->isInterleaved());
  EXPECT_EQ(format->commonFormat(), AV::AudioCommonFormat::pcmFormatFloat32);
}

TEST_F(AudioFrameworkTest, aDescriptionOfNoFormatMakesNone) {
  EXPECT_EQ(framework.makeFormat({}), nullptr);
}

TEST_F(AudioFrameworkTest, aBufferOfSeparateChannelsHasAListOfThem) {
  auto description = floatStereo;
  description.mFormatFlags |= CA::kAudioFormatFlagIsNonInterleaved;
  description.mBytesPerFrame = 4;
  const auto made = framework.makePCMBuffer(framework.makeFormat(description), 16);
  made->setFrameLength(10);
  const CA::AudioBufferList& list = *made->mutableAudioBufferList();
  EXPECT_EQ(list.mNumberBuffers, 2U);
  EXPECT_EQ((&list.mBuffers[0])[1].mDataByteSize, 40U);
  EXPECT_EQ(made->frameCapacity(), 16U);
  EXPECT_EQ(made->frameLength(), 10U);
}

TEST_F(AudioFrameworkTest, lookingAtTheListChangesNoLength) {
  const auto file = open();
  const auto made = framework.makePCMBuffer(framework.makeFormat(floatStereo), 16);
  for (const std::uint32_t frames : {0U, 10U}) {
    made->setFrameLength(frames);
    EXPECT_EQ(made->mutableAudioBufferList()->mBuffers[0].mDataByteSize, 8 * frames);
    EXPECT_EQ(made->frameLength(), frames);
    file->write(*made);
  }
  EXPECT_EQ(mac().files.front().writes, (std::vector<std::uint32_t>{0, 10}));
  EXPECT_EQ(mac().files.front().bytes.size(), 80U);
}

TEST_F(AudioFrameworkTest, aBufferThatNobodyFilledHasNoFrames) {
  const auto file = open();
  const auto made = framework.makePCMBuffer(framework.makeFormat(floatStereo), 16);
  EXPECT_EQ(made->frameLength(), 0U);
  file->write(*made);
  EXPECT_EQ(mac().files.front().writes, (std::vector<std::uint32_t>{0}));
}

TEST_F(AudioFrameworkTest, noMemoryForABufferMakesNone) {
  const auto format = framework.makeFormat(floatStereo);
  mac().hasMemoryForBuffers = false;
  EXPECT_EQ(framework.makePCMBuffer(format, 16), nullptr);
}

TEST_F(AudioFrameworkTest, buffersAreMadeOnAThreadWithoutAPool) {
  const auto format = framework.makeFormat(floatStereo);
  std::thread([&] { framework.makePCMBuffer(format, 16)->setFrameLength(16); }).join();
}

// The fake's constants are not their names: what stands here was looked up.
TEST_F(AudioFrameworkTest, settingsGoByTheFrameworksConstantsWithTheirTypes) {
  open({{AV::AVFormatIDKey, CA::kAudioFormatLinearPCM},
        {AV::AVSampleRateKey, 48000.0},
        {AV::AVNumberOfChannelsKey, std::int64_t{2}},
        {AV::AVEncoderBitRateKey, std::int64_t{256000}},
        {AV::AVEncoderAudioQualityKey, std::int64_t{96}},
        {AV::AVLinearPCMBitDepthKey, std::int64_t{16}},
        {AV::AVLinearPCMIsBigEndianKey, false},
        {AV::AVLinearPCMIsFloatKey, false},
        {AV::AVLinearPCMIsNonInterleaved, true}});
  EXPECT_EQ(mac().files.front().settings,
            "{key of AVEncoderAudioQualityKey: integer 96, key of AVEncoderBitRateKey: integer "
            "256000, key of AVFormatIDKey: u32 1819304813, key of AVLinearPCMBitDepthKey: integer "
            "16, key of AVLinearPCMIsBigEndianKey: Boolean false, key of AVLinearPCMIsFloatKey: "
            "Boolean false, key of AVLinearPCMIsNonInterleaved: Boolean true, key of "
            "AVNumberOfChannelsKey: integer 2, key of AVSampleRateKey: double 48000.000000}");
  EXPECT_EQ(mac().files.front().path, "/Users/test/a b.wav");
  EXPECT_EQ(mac().files.front().commonFormat, 1U);
  EXPECT_TRUE(mac().files.front().isInterleaved);
}

TEST_F(AudioFrameworkTest, aFileThatCannotBeOpenedSaysWhy) {
  mac().openFails = {"com.example", -54, "The disk is \u201Cfull\u201D."};
  EXPECT_EQ(open(), nullptr);
  EXPECT_EQ(error, (NS::Error{"com.example", -54, "The disk is \u201Cfull\u201D."}));
}

TEST_F(AudioFrameworkTest, aWriteThatFailsSaysWhyAndLeavesTheFileOpen) {
  const auto file = open();
  const auto frames = buffer(4);
  mac().writeFails = {"com.example", 28, "No space."};
  EXPECT_EQ(file->write(*frames), (NS::Error{"com.example", 28, "No space."}));
  mac().writeFails.reset();
  EXPECT_EQ(file->write(*frames), std::nullopt);
  EXPECT_EQ(mac().files.front().writes, (std::vector<std::uint32_t>{4}));
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
