// What looks like a mistake and is none. docs/decisions.md says why each is so.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/engine/EngineTest.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Oddities : public EngineTest {
 protected:
  std::vector<CA::AudioObjectID> tapsAfterAFailureAt(Call call) {
    world.hardware.fail(call, -1);
    EXPECT_NE(start(), std::nullopt);
    world.hardware.restore(call);
    return world.hardware.taps();
  }
};

std::string contentsOf(const std::filesystem::path& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

TEST_F(Oddities, nothingRaisesFileWriteFailedOrSourceProcessExited) {
  std::vector<std::string> naming;
  for (const char* folder : {"app", "ui", "discovery", "engine", "model", "cli", "platform"}) {
    const auto path = std::filesystem::path(AUDREL_SOURCE_DIR) / folder;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
      const std::string source = entry.is_regular_file() ? contentsOf(entry.path()) : "";
      if (source.find("fileWriteFailed") != std::string::npos ||
          source.find("sourceProcessExited") != std::string::npos) {
        naming.push_back(entry.path().filename());
      }
    }
  }
  EXPECT_THAT(naming, testing::UnorderedElementsAre("RecorderError.cpp", "RecorderError.h"));
}

TEST_F(Oddities, stopAlwaysAnswersNothing) {
  EXPECT_EQ(engine->stop(), std::nullopt);
  ASSERT_EQ(start(), std::nullopt);
  cycle();
  EXPECT_EQ(engine->stop(), std::nullopt);
}

TEST_F(Oddities, theTapThatAnEarlyFailureLeavesBehindIsForgottenByTheNextStart) {
  EXPECT_THAT(tapsAfterAFailureAt(Call::tapUID), ElementsAre(101));
  EXPECT_EQ(Inspector::tapID(*engine), 101U);
  EXPECT_EQ(engine->stop(), std::nullopt);
  EXPECT_THAT(world.hardware.taps(), ElementsAre(101));

  ASSERT_EQ(start(), std::nullopt);
  EXPECT_EQ(Inspector::tapID(*engine), 102U);
  engine->stop();
  EXPECT_THAT(world.hardware.taps(), ElementsAre(101));
  EXPECT_THAT(world.journal.lines("AudioHardwareDestroyProcessTap"),
              ElementsAre("AudioHardwareDestroyProcessTap(102) -> status 0"));
}

TEST_F(Oddities, aTapThatCannotBeMadeForgetsNoneThatWasLeftBehind) {
  tapsAfterAFailureAt(Call::tapUID);
  tapsAfterAFailureAt(Call::createProcessTap);
  EXPECT_EQ(Inspector::tapID(*engine), 101U);
  world.hardware.yieldNothing(Call::createProcessTap);
  EXPECT_EQ(start(), RecorderError::tapCreationFailed(0));
  EXPECT_EQ(Inspector::tapID(*engine), 101U);
}

TEST_F(Oddities, everyEarlyFailureLeavesATapOfItsOwn) {
  tapsAfterAFailureAt(Call::tapUID);
  tapsAfterAFailureAt(Call::tapFormat);
  tapsAfterAFailureAt(Call::defaultOutputDevice);
  tapsAfterAFailureAt(Call::deviceUID);
  EXPECT_THAT(tapsAfterAFailureAt(Call::createAggregateDevice),
              ElementsAre(101, 102, 103, 104, 105));
}

TEST_F(Oddities, aLaterFailureDestroysItsOwnTapAndNoneOfThoseLeftBehind) {
  tapsAfterAFailureAt(Call::tapUID);
  EXPECT_THAT(tapsAfterAFailureAt(Call::createIOProcID), ElementsAre(101));
  EXPECT_EQ(Inspector::tapID(*engine), 0U);
}

TEST_F(Oddities, theStreamDescriptionOfTheTapIsKeptByAFailureAfterItWasRead) {
  world.audio.makesNoFormat = true;
  ASSERT_NE(start(), std::nullopt);
  EXPECT_EQ(Inspector::tapStreamDescription(*engine), world.hardware.tapFormat);
}

TEST_F(Oddities, theStreamDescriptionOfTheTapIsKeptByStop) {
  ASSERT_EQ(start(), std::nullopt);
  engine->stop();
  EXPECT_EQ(Inspector::tapStreamDescription(*engine), world.hardware.tapFormat);
}

TEST_F(Oddities, whatAFormatQueryDoesNotWriteIs0) {
  world.hardware.yieldNothing(Call::tapFormat);
  EXPECT_EQ(start(), RecorderError::streamFormatUnavailable(-1));
  EXPECT_EQ(Inspector::tapStreamDescription(*engine), CA::AudioStreamBasicDescription{});
}

TEST_F(Oddities, aFailingStartClosesItsFileWithoutTheQueue) {
  world.hardware.fail(Call::deviceStart, -1);
  ASSERT_NE(start(), std::nullopt);
  EXPECT_THAT(world.journal.lines("writerQueue"), IsEmpty());
  EXPECT_THAT(world.journal.lines("file closed"), ElementsAre("file closed: new.wav"));
}

TEST_F(Oddities, destructionReleasesTheFieldsAndNeitherStopsNorDestroysAnything) {
  ASSERT_EQ(start(), std::nullopt);
  world.journal.clear();
  engine.reset();
  EXPECT_THAT(world.journal.lines(), ElementsAre("file closed: new.wav"));
  EXPECT_THAT(world.hardware.taps(), ElementsAre(101));
  EXPECT_THAT(world.hardware.aggregateDevices(), ElementsAre(201));
  EXPECT_EQ(world.hardware.installedIOProcs(), 1U);
}

TEST_F(Oddities, writerFormatIsKeptByStop) {
  ASSERT_EQ(start(), std::nullopt);
  const auto* format = Inspector::writerFormat(*engine);
  engine->stop();
  EXPECT_EQ(Inspector::writerFormat(*engine), format);
  EXPECT_NE(format, nullptr);
}

TEST_F(Oddities, theUnderrunCountIsKeptByStop) {
  ASSERT_EQ(start(), std::nullopt);
  world.audio.hasNoMemory = true;
  cycle();
  engine->stop();
  EXPECT_EQ(engine->underrunCount(), 1);
}

TEST_F(Oddities, aWriteThatFailsIsOneErrorLineForEachBufferAndNoMore) {
  ASSERT_EQ(start(), std::nullopt);
  world.audio.writeError = NS::Error{NS::POSIXErrorDomain, 28, "The disk is full."};
  for (int i = 0; i < 100; ++i) {
    cycle();
  }
  world.dispatch.queue().runAll();
  EXPECT_EQ(world.journal.lines(error("AVAudioFile.write failed: The disk is full.")).size(), 100U);
  EXPECT_TRUE(engine->isRecording());
}

}  // namespace
}  // namespace audrel
