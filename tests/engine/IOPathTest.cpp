#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/engine/EngineTest.h"
#include "tests/engine/ExpectedJournal.h"

namespace audrel {
namespace {

using fakes::InputCycle;
using testing::ElementsAre;
using testing::IsEmpty;

class IOPath : public EngineTest {
 protected:
  /// A running recording, from a tap with buffers for each channel when not interleaved.
  void record(std::uint32_t bytesPerFrame = 8, std::uint32_t buffers = 1) {
    auto& format = world.hardware.tapFormat;
    format.mBytesPerFrame = bytesPerFrame;
    if (buffers > 1) {
      format.mFormatFlags |= CA::kAudioFormatFlagIsNonInterleaved;
      format.mChannelsPerFrame = buffers;
    }
    ASSERT_EQ(start(), std::nullopt);
    world.journal.clear();
  }

  /// What the file has received in all, after every queued write ran.
  const std::vector<fakes::WrittenBuffer>& written() {
    world.dispatch.queue().runAll();
    return world.audio.files.back()->writes;
  }

  static CA::OSStatus callBack(const InputCycle& input, void* clientData) {
    return ioProcCallback(0, nullptr, &input.list(), nullptr, nullptr, nullptr, clientData);
  }
};

TEST_F(IOPath, theCallbackWithoutClientDataAnswers0AndDoesNothing) {
  EXPECT_EQ(callBack(InputCycle({4096}), nullptr), 0);
  EXPECT_THAT(world.journal.lines(), IsEmpty());
}

TEST_F(IOPath, theCallbackAnswers0WhateverHappens) {
  EXPECT_EQ(callBack(InputCycle({4096}), engine.get()), 0);
  record();
  EXPECT_EQ(callBack(InputCycle({4096}), engine.get()), 0);
  EXPECT_EQ(callBack(InputCycle({}), engine.get()), 0);
  EXPECT_EQ(callBack(InputCycle({6}), engine.get()), 0);
  world.audio.hasNoMemory = true;
  EXPECT_EQ(callBack(InputCycle({4096}), engine.get()), 0);
}

TEST_F(IOPath, theCallbackHandsOverTheInputAndWritesNothingToTheOutput) {
  record();
  const InputCycle input({4096});
  std::vector<std::byte> outputBytes(64, std::byte{7});
  CA::AudioBufferList output{1, {{2, 64, outputBytes.data()}}};
  ioProcCallback(0, nullptr, &input.list(), nullptr, &output, nullptr, engine.get());
  EXPECT_EQ(outputBytes, std::vector<std::byte>(64, std::byte{7}));
  EXPECT_EQ(output.mBuffers[0].mDataByteSize, 64U);
  EXPECT_EQ(written().size(), 1U);
}

TEST_F(IOPath, theCallbackHoldsTheEngineForTheLengthOfTheCall) {
  record();
  const std::weak_ptr<RecordingEngine> weak = engine;
  bool livedDuringTheCall = false;
  world.audio.whenBufferIsMade = [&] {
    engine.reset();
    livedDuringTheCall = !weak.expired();
  };
  callBack(InputCycle({4096}), engine.get());
  EXPECT_TRUE(livedDuringTheCall);
  EXPECT_TRUE(weak.expired());
}

TEST_F(IOPath, oneCycleIsOneBufferOneCopyAndOneItem) {
  record();
  cycle(512);
  EXPECT_THAT(world.journal.lines(),
              ElementsAre("AVAudioPCMBuffer(512 frames) -> buffer", "writerQueue.async(item 1)"));
  world.journal.clear();
  world.dispatch.queue().runAll();
  EXPECT_THAT(world.journal.lines(),
              ElementsAre("writerQueue runs item 1", "file.write(512 frames) -> ok"));
}

TEST_F(IOPath, withoutAWriterFormatACycleIsDroppedAndNotCounted) {
  engine->handleIOProc(&InputCycle({4096}).list());
  EXPECT_THAT(world.journal.lines(), IsEmpty());
  EXPECT_EQ(engine->underrunCount(), 0);
}

TEST_F(IOPath, anEmptyInputListIsDroppedAndNotCounted) {
  record();
  engine->handleIOProc(&InputCycle({}).list());
  EXPECT_THAT(world.journal.lines(), IsEmpty());
  EXPECT_EQ(engine->underrunCount(), 0);
}

TEST_F(IOPath, lessThanOneFrameIsDroppedAndNotCounted) {
  record();
  engine->handleIOProc(&InputCycle({6}).list());
  engine->handleIOProc(&InputCycle({0}).list());
  EXPECT_THAT(world.journal.lines(), IsEmpty());
  EXPECT_EQ(engine->underrunCount(), 0);
}

TEST_F(IOPath, aFrameSizeOf0IsDroppedAndNotCounted) {
  record(0);
  engine->handleIOProc(&InputCycle({4096}).list());
  EXPECT_THAT(world.journal.lines(), IsEmpty());
  EXPECT_EQ(engine->underrunCount(), 0);
}

TEST_F(IOPath, exactlyOneFrameIsWritten) {
  record();
  engine->handleIOProc(&InputCycle({8}).list());
  ASSERT_EQ(written().size(), 1U);
  EXPECT_EQ(written()[0].frames, 1U);
}

TEST_F(IOPath, twoBuffersOf4096BytesAreOneBufferOf512FramesOf8Bytes) {
  record(8, 2);
  const InputCycle input({4096, 4096});
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  EXPECT_EQ(written()[0].frames, 512U);
  EXPECT_THAT(written()[0].buffers, ElementsAre(input.bytes(0), input.bytes(1)));
}

TEST_F(IOPath, twoBuffersOf4096BytesAreOneBufferOf1024FramesOf4Bytes) {
  record(4, 2);
  const InputCycle input({4096, 4096});
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  EXPECT_EQ(written()[0].frames, 1024U);
  EXPECT_THAT(written()[0].buffers, ElementsAre(input.bytes(0), input.bytes(1)));
}

TEST_F(IOPath, theRemainderBehindTheLastWholeFrameIsDropped) {
  record();
  const InputCycle input({12});
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  EXPECT_EQ(written()[0].frames, 1U);
  const auto& bytes = input.bytes(0);
  EXPECT_EQ(written()[0].buffers[0], std::vector(bytes.begin(), bytes.begin() + 8));
}

TEST_F(IOPath, theFirstBufferAloneDecidesTheFrameCount) {
  record(4, 2);
  engine->handleIOProc(&InputCycle({40, 400}).list());
  engine->handleIOProc(&InputCycle({400, 0}).list());
  ASSERT_EQ(written().size(), 2U);
  EXPECT_EQ(written()[0].frames, 10U);
  EXPECT_EQ(written()[1].frames, 100U);
}

TEST_F(IOPath, aLaterBufferThatIsLargerIsCutToItsDestination) {
  record(4, 2);
  const InputCycle input({40, 4096});
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  const auto& large = input.bytes(1);
  EXPECT_EQ(written()[0].buffers[0], input.bytes(0));
  EXPECT_EQ(written()[0].buffers[1], std::vector(large.begin(), large.begin() + 40));
}

TEST_F(IOPath, noSizeIsTakenForANegativeOne) {
  constexpr std::uint32_t huge = 0xFFFFFFF8;
  record(4, 2);
  InputCycle input({40, 4096});
  input.claimSize(1, huge);
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  const auto& large = input.bytes(1);
  EXPECT_EQ(written()[0].buffers[1], std::vector(large.begin(), large.begin() + 40));

  world.audio.hasNoMemory = true;
  world.journal.clear();
  input.claimSize(0, huge);
  engine->handleIOProc(&input.list());
  EXPECT_THAT(world.journal.lines(), ElementsAre("AVAudioPCMBuffer(1073741822 frames) -> nothing"));
  EXPECT_EQ(engine->underrunCount(), 1);
}

TEST_F(IOPath, aLaterBufferThatIsSmallerLeavesTheRestOfItsDestinationAsAllocated) {
  record(4, 2);
  const InputCycle input({40, 8});
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  std::vector<std::byte> expectedBytes = input.bytes(1);
  expectedBytes.resize(40);
  EXPECT_EQ(written()[0].buffers[1], expectedBytes);
}

TEST_F(IOPath, ofMoreInputBuffersThanThePCMBufferHasTheFirstAreCopied) {
  record(4, 1);
  const InputCycle input({40, 40, 40});
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  EXPECT_THAT(written()[0].buffers, ElementsAre(input.bytes(0)));
}

TEST_F(IOPath, buffersThatNoInputFillsAreLeftAsAllocated) {
  record(4, 3);
  const InputCycle input({40}, 1);
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  const std::vector<std::byte> silence(40);
  EXPECT_THAT(written()[0].buffers, ElementsAre(input.bytes(0), silence, silence));
}

TEST_F(IOPath, aSourceBufferWithoutDataIsSkippedAndTheRestIsCopied) {
  record(4, 2);
  InputCycle input({40, 40}, 1);
  input.removeData(0);
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  EXPECT_EQ(written()[0].frames, 10U);
  EXPECT_THAT(written()[0].buffers, ElementsAre(std::vector<std::byte>(40), input.bytes(1)));
}

TEST_F(IOPath, aDestinationBufferWithoutDataIsSkippedAndTheRestIsCopied) {
  world.audio.buffersWithoutData = {0};
  record(4, 2);
  const InputCycle input({40, 40}, 1);
  engine->handleIOProc(&input.list());
  ASSERT_EQ(written().size(), 1U);
  EXPECT_THAT(written()[0].buffers, ElementsAre(std::vector<std::byte>(40), input.bytes(1)));
}

TEST_F(IOPath, aBufferThatCannotBeAllocatedIsCountedAndItsCycleDropped) {
  record();
  world.audio.hasNoMemory = true;
  cycle();
  EXPECT_EQ(engine->underrunCount(), 1);
  EXPECT_THAT(world.journal.lines(), ElementsAre("AVAudioPCMBuffer(512 frames) -> nothing"));
  world.audio.hasNoMemory = false;
  cycle();
  EXPECT_EQ(engine->underrunCount(), 1);
  EXPECT_EQ(written().size(), 1U);
}

TEST_F(IOPath, everyCycleHasABufferOfItsOwn) {
  record();
  const InputCycle first({64}, 1);
  const InputCycle second({64}, 100);
  engine->handleIOProc(&first.list());
  engine->handleIOProc(&second.list());
  ASSERT_EQ(written().size(), 2U);
  EXPECT_EQ(written()[0].buffers[0], first.bytes(0));
  EXPECT_EQ(written()[1].buffers[0], second.bytes(0));
}

TEST_F(IOPath, theInputMayChangeAsSoonAsTheCallReturns) {
  record();
  {
    const InputCycle gone({64}, 1);
    engine->handleIOProc(&gone.list());
  }
  EXPECT_EQ(written()[0].buffers[0], InputCycle({64}, 1).bytes(0));
}

TEST_F(IOPath, aWriteThatFailsIsLoggedOncePerBufferAndTheRecordingGoesOn) {
  record();
  world.audio.writeError = NS::Error{NS::POSIXErrorDomain, 28, "The disk is full."};
  cycle();
  cycle();
  world.dispatch.queue().runAll();
  EXPECT_THAT(world.journal.lines("log "),
              ElementsAre(expected::error("AVAudioFile.write failed: The disk is full."),
                          expected::error("AVAudioFile.write failed: The disk is full.")));
  EXPECT_TRUE(engine->isRecording());
  EXPECT_EQ(engine->underrunCount(), 0);

  world.audio.writeError = std::nullopt;
  cycle();
  EXPECT_EQ(written().size(), 1U);
  engine->stop();
  EXPECT_EQ(world.journal.lines().back(),
            expected::info("Recording stopped — elapsed=0.0s underruns=0"));
}

TEST_F(IOPath, releasingTheEngineWhileItemsAreQueuedMakesThemDoNothing) {
  record();
  cycle();
  cycle();
  const std::weak_ptr<RecordingEngine> weak = engine;
  engine.reset();
  EXPECT_TRUE(weak.expired()) << "an item keeps the engine alive";
  world.journal.clear();
  world.dispatch.queue().runAll();
  EXPECT_THAT(world.journal.lines("file.write"), IsEmpty());
  EXPECT_THAT(
      world.journal.lines(),
      ElementsAre("writerQueue runs item 1", "writerQueue runs item 2", "file closed: new.wav"));
}

TEST_F(IOPath, aCycleHandedOffBeforeTheFileWasClearedStillWritesToIt) {
  record();
  cycle();
  Inspector::clearAudioFile(*engine);
  EXPECT_TRUE(world.audio.files.back()->isOpen);
  EXPECT_EQ(written().size(), 1U);
  EXPECT_FALSE(world.audio.files.back()->isOpen);
}

TEST_F(IOPath, aCycleHandedOffAfterTheFileWasClearedDoesNothing) {
  record();
  engine->stop();
  world.journal.clear();
  engine->handleIOProc(&InputCycle({64}).list());
  world.dispatch.queue().runAll();
  EXPECT_THAT(world.journal.lines(),
              ElementsAre("AVAudioPCMBuffer(8 frames) -> buffer", "writerQueue.async(item 1)",
                          "writerQueue runs item 1"));
}

TEST_F(IOPath, itemsOfAnEarlierRecordingNeverWriteToALaterFile) {
  record();
  cycle();
  engine->stop();
  ASSERT_EQ(start(), std::nullopt);
  cycle();
  cycle();
  engine->stop();
  EXPECT_EQ(world.audio.files[0]->writes.size(), 1U);
  EXPECT_EQ(world.audio.files[1]->writes.size(), 2U);
}

}  // namespace
}  // namespace audrel
