// The engine between a main thread that starts and stops, an IO thread that delivers, and a writer
// queue that writes. Meant for the thread sanitizer above all.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "engine/RecordingEngine.h"
#include "model/RecorderError.h"
#include "tests/engine/ThreadedSystem.h"
#include "tests/fakes/ThreadQueue.h"
#include "tests/fakes/World.h"

namespace audrel {
namespace {

class ThreadedEngine : public testing::Test {
 protected:
  void start() {
    engine->start(RecordingSource::allSystemAudio(), RecordingFormat::wav, "/recordings/new.wav");
  }

  void waitForCycles(std::uint64_t count) {
    for (const std::uint64_t goal = hardware.cycles() + count; hardware.cycles() < goal;) {
      std::this_thread::yield();
    }
  }

  std::size_t openFiles() const {
    return static_cast<std::size_t>(std::count_if(audio.files.begin(), audio.files.end(),
                                                  [](const auto& file) { return file->isOpen; }));
  }

  threaded::Hardware hardware;
  threaded::Audio audio;
  threaded::Log log;
  fakes::ThreadDispatch dispatch;
  fakes::World world;  // for what is asked on the main thread alone
  std::shared_ptr<RecordingEngine> engine = RecordingEngine::make(
      {hardware, audio, world.captureAccess, world.clock, world.collation, world.fileManager,
       world.runningApplications, world.uuids, dispatch, log, world.diagnostics});
};

TEST_F(ThreadedEngine, everyDeliveredCycleIsInTheFileOnceAndInOrderWhenStopReturns) {
  for (std::size_t round = 0; round < 40; ++round) {
    const std::uint64_t before = hardware.cycles();
    start();
    waitForCycles(100);
    engine->stop();

    std::vector<std::uint64_t> delivered(hardware.cycles() - before);
    std::iota(delivered.begin(), delivered.end(), before);
    ASSERT_EQ(audio.files[round]->cycles, delivered);
    ASSERT_TRUE(audio.files[round]->isWhole);
    ASSERT_EQ(openFiles(), 0U);
  }
}

TEST_F(ThreadedEngine, aStopRightAfterAStartLosesNothing) {
  for (std::size_t round = 0; round < 300; ++round) {
    const std::uint64_t before = hardware.cycles();
    start();
    engine->stop();
    ASSERT_EQ(audio.files[round]->cycles.size(), hardware.cycles() - before);
    ASSERT_EQ(openFiles(), 0U);
  }
}

TEST_F(ThreadedEngine, underrunsAreCountedOnTheIOThreadAndReadOnMain) {
  audio.buffersUntilFailure = 3;
  for (std::size_t round = 0; round < 40; ++round) {
    const std::uint64_t before = hardware.cycles();
    start();
    std::int64_t seen = 0;
    for (int i = 0; i < 50; ++i) {
      waitForCycles(2);
      const std::int64_t now = engine->underrunCount();
      ASSERT_GE(now, seen);
      seen = now;
    }
    engine->stop();
    const std::uint64_t dropped = hardware.cycles() - before - audio.files[round]->cycles.size();
    // The reset at the end of start may drop those that came before it.
    ASSERT_LE(engine->underrunCount(), static_cast<std::int64_t>(dropped));
    ASSERT_GT(engine->underrunCount(), 0);
  }
}

TEST_F(ThreadedEngine, writesThatFailAreLoggedOnTheQueueAndTheRestIsWritten) {
  audio.writesUntilFailure = 5;
  start();
  waitForCycles(200);
  engine->stop();
  EXPECT_EQ(log.errors(), static_cast<int>(audio.files.front()->cycles.size() / 5));
  EXPECT_GE(log.errors(), 40);
}

TEST_F(ThreadedEngine, aStartThatFailsAtTheDeviceDeliversNothingAndTheNextOneWorks) {
  for (std::size_t round = 0; round < 50; ++round) {
    hardware.refusesToStart = true;
    const std::uint64_t before = hardware.cycles();
    EXPECT_THROW(start(), RecorderError);
    ASSERT_EQ(hardware.cycles(), before);
    hardware.refusesToStart = false;
    start();
    waitForCycles(5);
    engine->stop();
    ASSERT_EQ(audio.files[2 * round + 1]->cycles.size(), hardware.cycles() - before);
    ASSERT_EQ(openFiles(), 0U);
  }
}

}  // namespace
}  // namespace audrel
