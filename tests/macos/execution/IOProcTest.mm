// The IO procedure of a system that keeps no promise: it calls whenever it likes, from threads of
// its own, while stop and destroy run and after they have returned.

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

#include "platform/macos/AudioHardware.h"
#include "tests/macos/execution/MacTest.h"

namespace audrel::macos {
namespace {

/// A procedure's client data. Its fields are plain, so that the thread sanitizer sees whether the
/// adapter orders the threads.
struct Cycles {
  int count = 0;
  std::vector<const void*> data;
  std::vector<std::uint32_t> sizes;
  CA::OSStatus answer = 0;
  std::function<void()> inEach;
};

CA::OSStatus remember(CA::AudioObjectID, const CA::AudioTimeStamp*,
                      const CA::AudioBufferList* input, const CA::AudioTimeStamp*,
                      CA::AudioBufferList*, const CA::AudioTimeStamp*, void* clientData) {
  auto& cycles = *static_cast<Cycles*>(clientData);
  ++cycles.count;
  for (std::uint32_t i = 0; i < input->mNumberBuffers; ++i) {
    const CA::AudioBuffer& buffer = (&input->mBuffers[0])[i];
    cycles.data.push_back(buffer.mData);
    cycles.sizes.push_back(buffer.mDataByteSize);
  }
  if (cycles.inEach) {
    cycles.inEach();
  }
  return cycles.answer;
}

class IOProcTest : public MacTest {
 protected:
  CA::AudioDeviceIOProcID install() {
    CA::AudioDeviceIOProcID ioProc = nullptr;
    EXPECT_EQ(hardware->AudioDeviceCreateIOProcID(201, remember, cycles.get(), &ioProc), 0);
    return ioProc;
  }

  CA::AudioDeviceIOProcID start() {
    const auto ioProc = install();
    EXPECT_EQ(hardware->AudioDeviceStart(201, ioProc), 0);
    return ioProc;
  }

  static CA::OSStatus deliver(std::size_t bytes) {
    return fakemac::deliver({std::vector<std::byte>(bytes)});
  }

  std::optional<AudioHardware> hardware{std::in_place};
  std::unique_ptr<Cycles> cycles = std::make_unique<Cycles>();
};

TEST_F(IOProcTest, aProcedureGetsTheSystemsBuffersWithoutACopy) {
  start();
  const std::vector<std::vector<std::byte>> buffers = {std::vector<std::byte>(8),
                                                       std::vector<std::byte>(16)};
  fakemac::deliver(buffers);
  EXPECT_EQ(cycles->data, (std::vector<const void*>{buffers[0].data(), buffers[1].data()}));
  EXPECT_EQ(cycles->sizes, (std::vector<std::uint32_t>{8, 16}));
}

TEST_F(IOProcTest, theSystemGets0WhateverTheProcedureAnswers) {
  start();
  cycles->answer = 12;
  EXPECT_EQ(deliver(8), 0);
  EXPECT_EQ(cycles->count, 1);
}

TEST_F(IOProcTest, anExceptionOfAProcedureDoesNotReachTheSystem) {
  start();
  cycles->inEach = [] { throw std::runtime_error("of a procedure"); };
  EXPECT_EQ(deliver(8), 0);
  EXPECT_EQ(deliver(8), 0);
  EXPECT_EQ(cycles->count, 2);
}

TEST_F(IOProcTest, anExceptionOfAFrameworkDoesNotReachTheSystem) {
  start();
  cycles->inEach = [] { fakemac::raise("com.example", "within a cycle"); };
  @autoreleasepool {
    EXPECT_EQ(fakemac::cycleAtAnyTime()(), 0);
  }
  EXPECT_EQ(cycles->count, 1);
}

TEST_F(IOProcTest, noProcedureIsCalledBeforeStartOrAfterStop) {
  const auto ioProc = install();
  const auto cycle = fakemac::cycleAtAnyTime();
  EXPECT_EQ(cycle(), 0);
  EXPECT_EQ(cycles->count, 0);
  hardware->AudioDeviceStart(201, ioProc);
  EXPECT_EQ(cycle(), 0);
  EXPECT_EQ(cycles->count, 1);
  hardware->AudioDeviceStop(201, ioProc);
  EXPECT_EQ(cycle(), 0);
  EXPECT_EQ(cycles->count, 1);
  hardware->AudioDeviceStart(201, ioProc);
  EXPECT_EQ(cycle(), 0);
  EXPECT_EQ(cycles->count, 2);
}

TEST_F(IOProcTest, aCycleWithinTheSystemsOwnStartOrStopIsRecorded) {
  const auto ioProc = install();
  const auto cycle = fakemac::cycleAtAnyTime();
  mac().happenings["AudioDeviceStart"] = cycle;
  mac().happenings["AudioDeviceStop"] = cycle;
  hardware->AudioDeviceStart(201, ioProc);
  EXPECT_EQ(cycles->count, 1);
  hardware->AudioDeviceStop(201, ioProc);
  EXPECT_EQ(cycles->count, 2);
}

TEST_F(IOProcTest, aStartThatFailsLetsNoCycleIn) {
  mac().failing["AudioDeviceStart"] = -1;
  const auto ioProc = install();
  EXPECT_EQ(hardware->AudioDeviceStart(201, ioProc), -1);
  EXPECT_EQ(fakemac::cycleAtAnyTime()(), 0);
  EXPECT_EQ(cycles->count, 0);
}

TEST_F(IOProcTest, aStopThatFailsLetsNoFurtherCycleIn) {
  mac().failing["AudioDeviceStop"] = -1;
  const auto ioProc = start();
  EXPECT_EQ(hardware->AudioDeviceStop(201, ioProc), -1);
  EXPECT_EQ(deliver(8), 0);
  EXPECT_EQ(cycles->count, 0);
}

TEST_F(IOProcTest, aProcedureThatTheSystemKeepsIsCalledNoMore) {
  mac().failing["AudioDeviceDestroyIOProcID"] = -1;
  const auto ioProc = start();
  EXPECT_EQ(hardware->AudioDeviceDestroyIOProcID(201, ioProc), -1);
  cycles.reset();
  EXPECT_EQ(deliver(8), 0);
}

TEST_F(IOProcTest, aCycleAfterDestroyTouchesNothingOfTheProgram) {
  const auto ioProc = start();
  const auto cycle = fakemac::cycleAtAnyTime();
  hardware->AudioDeviceStop(201, ioProc);
  EXPECT_EQ(hardware->AudioDeviceDestroyIOProcID(201, ioProc), 0);
  EXPECT_EQ(fakemac::hardwareObjects(), 0U);
  cycles.reset();
  EXPECT_EQ(cycle(), 0);
  hardware.reset();
  EXPECT_EQ(cycle(), 0);
}

TEST_F(IOProcTest, aSuccessWithoutAnIdGivesNone) {
  mac().withoutResult.insert("AudioDeviceCreateIOProcID");
  EXPECT_EQ(install(), nullptr);
}

/// A cycle on a thread of its own, which is inside when this is made and lasts a moment longer.
class LongCycle {
 public:
  explicit LongCycle(Cycles& cycles) {
    cycles.inEach = [this] {
      isInside_ = true;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      hasEnded_ = true;
    };
    thread_ = std::thread(fakemac::cycleAtAnyTime());
    while (!isInside_) {
      std::this_thread::yield();
    }
  }
  ~LongCycle() { thread_.join(); }
  LongCycle(const LongCycle&) = delete;
  LongCycle& operator=(const LongCycle&) = delete;

  bool hasEnded() const { return hasEnded_; }

 private:
  std::atomic<bool> isInside_ = false;
  bool hasEnded_ = false;
  std::thread thread_;
};

TEST_F(IOProcTest, stopWaitsUntilTheCycleThatRunsHasEnded) {
  const auto ioProc = start();
  const LongCycle cycle(*cycles);
  hardware->AudioDeviceStop(201, ioProc);
  EXPECT_TRUE(cycle.hasEnded());
}

TEST_F(IOProcTest, destroyWaitsUntilTheCycleThatRunsHasEnded) {
  const auto ioProc = start();
  const LongCycle cycle(*cycles);
  hardware->AudioDeviceDestroyIOProcID(201, ioProc);
  EXPECT_TRUE(cycle.hasEnded());
}

TEST_F(IOProcTest, aCycleMayStopItsOwnProcedureMoreThanOnce) {
  const auto ioProc = start();
  const auto cycle = fakemac::cycleAtAnyTime();
  cycles->inEach = [&] {
    hardware->AudioDeviceStop(201, ioProc);
    hardware->AudioDeviceStop(201, ioProc);
    hardware->AudioDeviceDestroyIOProcID(201, ioProc);
  };
  std::thread(cycle).join();
  EXPECT_EQ(cycles->count, 1);
  hardware->AudioDeviceStop(201, ioProc);
  cycles.reset();
  EXPECT_EQ(cycle(), 0);
}

/// Calls the procedures that are installed, without a pause, until it goes.
class HeedlessIOThread {
 public:
  HeedlessIOThread()
      : thread_([this, cycle = fakemac::cycleAtAnyTime()] {
          while (!isDone_.load(std::memory_order_relaxed)) {
            cycle();
            calls_.fetch_add(1, std::memory_order_relaxed);
          }
        }) {}
  ~HeedlessIOThread() {
    isDone_.store(true, std::memory_order_relaxed);
    thread_.join();
  }
  HeedlessIOThread(const HeedlessIOThread&) = delete;
  HeedlessIOThread& operator=(const HeedlessIOThread&) = delete;

  void waitForCalls(int count) const {
    const int target = calls_.load(std::memory_order_relaxed) + count;
    while (calls_.load(std::memory_order_relaxed) < target) {
      std::this_thread::yield();
    }
  }

 private:
  std::atomic<bool> isDone_ = false;
  std::atomic<int> calls_ = 0;
  std::thread thread_;
};

TEST_F(IOProcTest, aSystemThatCallsWithoutAPauseFindsWhatItMayTouchAndNothingElse) {
  for (int round = 0; round < 40; ++round) {
    const auto ioProc = install();
    const HeedlessIOThread ioThread;
    ioThread.waitForCalls(2);
    cycles->count = 1000;
    hardware->AudioDeviceStart(201, ioProc);
    ioThread.waitForCalls(2);
    hardware->AudioDeviceStop(201, ioProc);
    EXPECT_GT(cycles->count, 1000);
    cycles->count = 0;
    ioThread.waitForCalls(2);
    hardware->AudioDeviceStart(201, ioProc);
    hardware->AudioDeviceDestroyIOProcID(201, ioProc);
    cycles = std::make_unique<Cycles>();
    ioThread.waitForCalls(2);
  }
}

}  // namespace
}  // namespace audrel::macos
