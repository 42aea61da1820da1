// The engine between a main thread that starts and stops, an IO thread that delivers, and a writer
// queue that writes. Meant for the thread sanitizer above all: so the audio here has no journal,
// whose lock would hide a race.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <thread>
#include <utility>
#include <vector>

#include "engine/RecordingEngine.h"
#include "model/RecorderError.h"
#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/IOThread.h"
#include "tests/fakes/ThreadQueue.h"
#include "tests/fakes/World.h"

namespace audrel {
namespace {

constexpr std::uint32_t framesInCycle = 16;

/// One cycle: every frame of 8 bytes holds the cycle's number.
using Frames = std::array<std::uint64_t, framesInCycle>;

/// What one file was given: the cycle numbers of its frames, in order. Plain data, which the writer
/// queue writes and main reads when `stop` has returned.
struct Written {
  std::vector<std::uint64_t> cycles;
  bool isWhole = true;  ///< every frame of every buffer held the same number
  bool isOpen = true;
};

class Buffer final : public AV::PCMBuffer {
 public:
  explicit Buffer(std::shared_ptr<const AV::AudioFormat> format) : format_(std::move(format)) {}

  const AV::AudioFormat& format() const override { return *format_; }
  std::uint32_t frameCapacity() const override { return framesInCycle; }
  std::uint32_t frameLength() const override { return framesInCycle; }
  void setFrameLength(std::uint32_t /*frames*/) override {}
  CA::AudioBufferList* mutableAudioBufferList() override { return &list_; }

  const Frames& frames() const { return frames_; }

 private:
  std::shared_ptr<const AV::AudioFormat> format_;
  Frames frames_{};
  CA::AudioBufferList list_{1, {{2, sizeof(Frames), frames_.data()}}};
};

class File final : public AV::AudioFile {
 public:
  File(std::shared_ptr<Written> written, std::uint64_t writesUntilFailure)
      : written_(std::move(written)), writesUntilFailure_(writesUntilFailure) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() override { written_->isOpen = false; }

  std::optional<NS::Error> write(AV::PCMBuffer& buffer) override {
    const Frames& frames = dynamic_cast<Buffer&>(buffer).frames();
    const auto isFirst = [&frames](std::uint64_t frame) { return frame == frames.front(); };
    written_->isWhole = written_->isWhole && std::all_of(frames.begin(), frames.end(), isFirst);
    written_->cycles.push_back(frames.front());
    const bool fails =
        writesUntilFailure_ != 0 && written_->cycles.size() % writesUntilFailure_ == 0;
    return fails ? std::optional(NS::Error{NS::POSIXErrorDomain, 28, "The disk is full."})
                 : std::nullopt;
  }

 private:
  std::shared_ptr<Written> written_;
  std::uint64_t writesUntilFailure_;
};

class Audio final : public AV::AudioFramework {
 public:
  /// Every so many buffers one cannot be made, and every so many writes one fails. 0: never.
  std::uint64_t buffersUntilFailure = 0;
  std::uint64_t writesUntilFailure = 0;

  std::vector<std::shared_ptr<Written>> files;

  std::shared_ptr<const AV::AudioFormat> makeFormat(
      const CA::AudioStreamBasicDescription& description) override {
    return std::make_shared<fakes::FakeFormat>(description);
  }

  std::unique_ptr<AV::PCMBuffer> makePCMBuffer(const std::shared_ptr<const AV::AudioFormat>& format,
                                               std::uint32_t /*frameCapacity*/) noexcept override {
    ++buffersMade_;
    const bool fails = buffersUntilFailure != 0 && buffersMade_ % buffersUntilFailure == 0;
    return fails ? nullptr : std::make_unique<Buffer>(format);
  }

  std::shared_ptr<AV::AudioFile> openForWriting(const std::filesystem::path& /*url*/,
                                                const AV::Settings& /*settings*/,
                                                AV::AudioCommonFormat /*commonFormat*/,
                                                bool /*interleaved*/,
                                                NS::Error* /*error*/) override {
    files.push_back(std::make_shared<Written>());
    return std::make_shared<File>(files.back(), writesUntilFailure);
  }

 private:
  std::uint64_t buffersMade_ = 0;
};

class ThreadedEngine : public testing::Test {
 protected:
  void start() {
    engine->start(RecordingSource::allSystemAudio(), RecordingFormat::wav, "/recordings/new.wav");
  }

  void waitForCycles(std::uint64_t count) {
    for (const std::uint64_t goal = cycles + count; cycles < goal;) {
      std::this_thread::yield();
    }
  }

  /// On the IO thread, as fast as it can.
  void deliverCycle() {
    const std::uint64_t number = cycles.load(std::memory_order_relaxed);
    Frames frames;
    frames.fill(number);
    world.hardware.cycle({1, {{2, sizeof frames, frames.data()}}});
    frames.fill(0);
    cycles.store(number + 1, std::memory_order_relaxed);
    // The queue's memory must not grow without bound on a busy machine.
    std::this_thread::yield();
  }

  std::size_t openFiles() const {
    return static_cast<std::size_t>(std::count_if(audio.files.begin(), audio.files.end(),
                                                  [](const auto& file) { return file->isOpen; }));
  }

  fakes::World world;  // for what is asked on the main thread alone
  Audio audio;
  fakes::ThreadDispatch dispatch;
  std::atomic<std::uint64_t> cycles = 0;  ///< that were delivered
  fakes::IOThread ioThread{world.hardware, [this] { deliverCycle(); }};
  std::shared_ptr<RecordingEngine> engine = RecordingEngine::make(
      {world.hardware, audio, world.captureAccess, world.clock, world.collation, world.fileManager,
       world.runningApplications, world.uuids, dispatch, world.log, world.diagnostics});
};

TEST_F(ThreadedEngine, everyDeliveredCycleIsInTheFileOnceAndInOrderWhenStopReturns) {
  for (std::size_t round = 0; round < 40; ++round) {
    const std::uint64_t before = cycles;
    start();
    waitForCycles(100);
    engine->stop();

    std::vector<std::uint64_t> delivered(cycles - before);
    std::iota(delivered.begin(), delivered.end(), before);
    ASSERT_EQ(audio.files[round]->cycles, delivered);
    ASSERT_TRUE(audio.files[round]->isWhole);
    ASSERT_EQ(openFiles(), 0U);
  }
}

TEST_F(ThreadedEngine, aStopRightAfterAStartLosesNothing) {
  for (std::size_t round = 0; round < 300; ++round) {
    const std::uint64_t before = cycles;
    start();
    engine->stop();
    ASSERT_EQ(audio.files[round]->cycles.size(), cycles - before);
    ASSERT_EQ(openFiles(), 0U);
  }
}

TEST_F(ThreadedEngine, underrunsAreCountedOnTheIOThreadAndReadOnMain) {
  audio.buffersUntilFailure = 3;
  for (std::size_t round = 0; round < 40; ++round) {
    const std::uint64_t before = cycles;
    start();
    std::int64_t seen = 0;
    for (int i = 0; i < 50; ++i) {
      waitForCycles(2);
      const std::int64_t now = engine->underrunCount();
      ASSERT_GE(now, seen);
      seen = now;
    }
    engine->stop();
    const std::uint64_t dropped = cycles - before - audio.files[round]->cycles.size();
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
  const std::size_t errors =
      world.journal.lines("log io.github.audrel.Audrel [engine] error").size();
  EXPECT_EQ(errors, audio.files.front()->cycles.size() / 5);
  EXPECT_GE(errors, 40U);
}

TEST_F(ThreadedEngine, aStartThatFailsAtTheDeviceDeliversNothingAndTheNextOneWorks) {
  constexpr auto deviceStart = fakes::FakeHardware::Call::deviceStart;
  for (std::size_t round = 0; round < 50; ++round) {
    world.hardware.fail(deviceStart, CA::kAudioHardwareIllegalOperationError);
    const std::uint64_t before = cycles;
    EXPECT_THROW(start(), RecorderError);
    ASSERT_EQ(cycles, before);
    world.hardware.restore(deviceStart);
    start();
    waitForCycles(5);
    engine->stop();
    ASSERT_EQ(audio.files[2 * round + 1]->cycles.size(), cycles - before);
    ASSERT_EQ(openFiles(), 0U);
  }
}

}  // namespace
}  // namespace audrel
