#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/engine/EngineTest.h"

namespace audrel {
namespace {

using fakes::InputCycle;
using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::byte>;

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

  void deliver(const InputCycle& input) { engine->handleIOProc(&input.list()); }

  /// What the file has received in all, after every queued write ran.
  const std::vector<fakes::WrittenBuffer>& written() {
    world.dispatch.queue().runAll();
    return world.audio.files.back()->writes;
  }

  /// What became of `input`, the first that is delivered.
  fakes::WrittenBuffer writtenOf(const InputCycle& input) {
    deliver(input);
    EXPECT_EQ(written().size(), 1U);
    return written().empty() ? fakes::WrittenBuffer{} : written().front();
  }

  void expectNothingCameOf(const InputCycle& input) {
    deliver(input);
    EXPECT_THAT(world.journal.lines(), IsEmpty());
    EXPECT_EQ(engine->underrunCount(), 0);
  }

  static Bytes first(std::ptrdiff_t size, const Bytes& bytes) {
    return {bytes.begin(), bytes.begin() + size};
  }

  static CA::OSStatus callBack(const InputCycle& input, void* clientData) {
    return ioProcCallback(0, nullptr, &input.list(), nullptr, nullptr, nullptr, clientData);
  }
};

TEST_F(IOPath, theCallbackAnswers0WhateverHappensAndDoesNothingWithoutClientData) {
  EXPECT_EQ(callBack(InputCycle({4096}), nullptr), 0);
  EXPECT_THAT(world.journal.lines(), IsEmpty());
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
  Bytes outputBytes(64, std::byte{7});
  CA::AudioBufferList output{1, {{2, 64, outputBytes.data()}}};
  ioProcCallback(0, nullptr, &input.list(), nullptr, &output, nullptr, engine.get());
  EXPECT_EQ(outputBytes, Bytes(64, std::byte{7}));
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

TEST_F(IOPath, withoutAWriterFormatACycleIsDroppedAndNotCounted) {
  expectNothingCameOf(InputCycle({4096}));
}

TEST_F(IOPath, anEmptyInputListIsDroppedAndNotCounted) {
  record();
  expectNothingCameOf(InputCycle({}));
}

TEST_F(IOPath, lessThanOneFrameIsDroppedAndNotCounted) {
  record();
  expectNothingCameOf(InputCycle({6}));
  expectNothingCameOf(InputCycle({0}));
}

TEST_F(IOPath, aFrameSizeOf0IsDroppedAndNotCounted) {
  record(0);
  expectNothingCameOf(InputCycle({4096}));
}

TEST_F(IOPath, exactlyOneFrameIsWritten) {
  record();
  EXPECT_EQ(writtenOf(InputCycle({8})).frames, 1U);
}

TEST_F(IOPath, twoBuffersOf4096BytesAreOneBufferOf512FramesOf8Bytes) {
  record(8, 2);
  const InputCycle input({4096, 4096});
  const auto buffer = writtenOf(input);
  EXPECT_EQ(buffer.frames, 512U);
  EXPECT_THAT(buffer.buffers, ElementsAre(input.bytes(0), input.bytes(1)));
}

TEST_F(IOPath, twoBuffersOf4096BytesAreOneBufferOf1024FramesOf4Bytes) {
  record(4, 2);
  const InputCycle input({4096, 4096});
  const auto buffer = writtenOf(input);
  EXPECT_EQ(buffer.frames, 1024U);
  EXPECT_THAT(buffer.buffers, ElementsAre(input.bytes(0), input.bytes(1)));
}

TEST_F(IOPath, theRemainderBehindTheLastWholeFrameIsDropped) {
  record();
  const InputCycle input({12});
  const auto buffer = writtenOf(input);
  EXPECT_EQ(buffer.frames, 1U);
  EXPECT_THAT(buffer.buffers, ElementsAre(first(8, input.bytes(0))));
}

TEST_F(IOPath, theFirstBufferAloneDecidesTheFrameCount) {
  record(4, 2);
  deliver(InputCycle({40, 400}));
  deliver(InputCycle({400, 0}));
  ASSERT_EQ(written().size(), 2U);
  EXPECT_EQ(written()[0].frames, 10U);
  EXPECT_EQ(written()[1].frames, 100U);
}

TEST_F(IOPath, aLaterBufferThatIsLargerIsCutToItsDestination) {
  record(4, 2);
  const InputCycle input({40, 4096});
  EXPECT_THAT(writtenOf(input).buffers, ElementsAre(input.bytes(0), first(40, input.bytes(1))));
}

TEST_F(IOPath, noSizeIsTakenForANegativeOne) {
  constexpr std::uint32_t huge = 0xFFFFFFF8;
  record(4, 2);
  InputCycle input({40, 4096});
  input.claimSize(1, huge);
  EXPECT_EQ(writtenOf(input).buffers.back(), first(40, input.bytes(1)));

  world.audio.hasNoMemory = true;
  world.journal.clear();
  input.claimSize(0, huge);
  deliver(input);
  EXPECT_THAT(world.journal.lines(), ElementsAre("AVAudioPCMBuffer(1073741822 frames) -> nothing"));
  EXPECT_EQ(engine->underrunCount(), 1);
}

TEST_F(IOPath, aLaterBufferThatIsSmallerLeavesTheRestOfItsDestinationAsAllocated) {
  record(4, 2);
  const InputCycle input({40, 8});
  Bytes expected = input.bytes(1);
  expected.resize(40);
  EXPECT_EQ(writtenOf(input).buffers.back(), expected);
}

TEST_F(IOPath, ofMoreInputBuffersThanThePCMBufferHasTheFirstAreCopied) {
  record(4, 1);
  const InputCycle input({40, 40, 40});
  EXPECT_THAT(writtenOf(input).buffers, ElementsAre(input.bytes(0)));
}

TEST_F(IOPath, buffersThatNoInputFillsAreLeftAsAllocated) {
  record(4, 3);
  const InputCycle input({40}, 1);
  EXPECT_THAT(writtenOf(input).buffers, ElementsAre(input.bytes(0), Bytes(40), Bytes(40)));
}

TEST_F(IOPath, aSourceBufferWithoutDataIsSkippedAndTheRestIsCopied) {
  record(4, 2);
  InputCycle input({40, 40}, 1);
  input.removeData(0);
  const auto buffer = writtenOf(input);
  EXPECT_EQ(buffer.frames, 10U);
  EXPECT_THAT(buffer.buffers, ElementsAre(Bytes(40), input.bytes(1)));
}

TEST_F(IOPath, aDestinationBufferWithoutDataIsSkippedAndTheRestIsCopied) {
  world.audio.buffersWithoutData = {0};
  record(4, 2);
  const InputCycle input({40, 40}, 1);
  EXPECT_THAT(writtenOf(input).buffers, ElementsAre(Bytes(40), input.bytes(1)));
}

TEST_F(IOPath, everyCycleHasABufferOfItsOwnAndItsInputMayChangeAsSoonAsTheCallReturns) {
  record();
  deliver(InputCycle({64}, 1));
  deliver(InputCycle({64}, 100));
  ASSERT_EQ(written().size(), 2U);
  EXPECT_EQ(written()[0].buffers[0], InputCycle({64}, 1).bytes(0));
  EXPECT_EQ(written()[1].buffers[0], InputCycle({64}, 100).bytes(0));
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
  deliver(InputCycle({64}));
  world.dispatch.queue().runAll();
  EXPECT_THAT(world.journal.lines(),
              ElementsAre("AVAudioPCMBuffer(8 frames) -> buffer", "writerQueue.async(item 1)",
                          "writerQueue runs item 1"));
}

}  // namespace
}  // namespace audrel
