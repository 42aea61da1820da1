#include "platform/linux/pipewire/GraphPosition.h"

#include <gtest/gtest.h>
#include <spa/node/io.h>
#include <sys/mman.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

namespace audrel::linuxos {
namespace {

TEST(GraphPosition, tellsOfNoCycleWithoutAnArea) {
  GraphPosition position;
  EXPECT_FALSE(position.cycle(1));
  spa_io_position area{};
  position.replace(&area);
  EXPECT_TRUE(position.cycle(1));
  position.replace(nullptr);
  EXPECT_FALSE(position.cycle(1));
}

TEST(GraphPosition, tellsWhatTheClockOfTheAreaDoes) {
  spa_io_position area{};
  area.clock.id = 7;
  area.clock.position = 4096;
  area.clock.duration = 1024;
  area.clock.rate = {.num = 1, .denom = 48000};
  area.clock.nsec = 123;
  GraphPosition position;
  position.replace(&area);
  const auto cycle = position.cycle(1);
  ASSERT_TRUE(cycle);
  EXPECT_EQ(cycle->clockId, 7U);
  EXPECT_EQ(cycle->position, 4096U);
  EXPECT_EQ(cycle->duration, 1024U);
  EXPECT_EQ(cycle->rate, 48000U);
  EXPECT_EQ(cycle->nsec, 123U);
}

constexpr std::uint64_t later = 10'000'000'000;
constexpr std::uint64_t cycleLength = 1024 * 1'000'000'000ULL / 48000;

/// A driver whose last cycle began at `nsec`.
spa_io_position driver(std::uint32_t id, std::uint64_t nsec) {
  spa_io_position area{};
  area.clock.id = id;
  area.clock.duration = 1024;
  area.clock.rate.num = 1;
  area.clock.rate.denom = 48000;
  area.clock.nsec = nsec;
  return area;
}

/// A stream that read a cycle of the driver 1 at one second.
struct ChangeOfDriver : testing::Test {
  static constexpr std::uint64_t second = 1'000'000'000;

  ChangeOfDriver() {
    position.replace(&speakers);
    position.cycle(second);
  }

  std::uint64_t unheard() { return position.cycle(2 * second)->unheard; }

  spa_io_position speakers = driver(1, second);
  GraphPosition position;
};

TEST_F(ChangeOfDriver, aDriverThatHasNotBegunSinceLeavesNothingUnheard) {
  const spa_io_position headphones = driver(2, second - 1);
  position.replace(&headphones);
  EXPECT_EQ(unheard(), 0U);
}

TEST_F(ChangeOfDriver, theFirstCycleOfADriverIsNobodys) {
  const spa_io_position headphones = driver(2, second + 1);
  position.replace(&headphones);
  EXPECT_EQ(unheard(), 0U);
}

TEST_F(ChangeOfDriver, whatADriverBeganAfterItsFirstCycleIsUnheard) {
  const spa_io_position headphones = driver(2, second + 1 + 3 * cycleLength);
  position.replace(&headphones);
  EXPECT_EQ(unheard(), 3 * cycleLength);
  EXPECT_EQ(unheard(), 0U) << "told once";
}

TEST_F(ChangeOfDriver, aDriverThatIsLeftAgainUnheardWasSomebodys) {
  const spa_io_position inBetween = driver(2, second + 1);
  const spa_io_position headphones = driver(3, second + 2);
  position.replace(&inBetween);
  position.replace(&headphones);
  EXPECT_EQ(unheard(), cycleLength);
}

TEST_F(ChangeOfDriver, driversThatAreLeftUnheardAddUp) {
  const spa_io_position one = driver(2, second + 1);
  const spa_io_position other = driver(3, second + 2);
  position.replace(&one);
  position.replace(&other);
  position.replace(nullptr);
  position.replace(&speakers);
  EXPECT_EQ(unheard(), 2 * cycleLength);
}

TEST_F(ChangeOfDriver, aDriverThatIsLeftAfterACycleLeavesNothingUnheard) {
  const spa_io_position inBetween = driver(2, second + 1);
  const spa_io_position headphones = driver(3, second - 1);
  position.replace(&inBetween);
  position.cycle(second + cycleLength);
  position.replace(&headphones);
  EXPECT_EQ(unheard(), 0U);
}

TEST_F(ChangeOfDriver, aDriverThatWasStoppedWithTheStreamBeginsWithThosePlaying) {
  const spa_io_position inBetween = driver(2, second + 1);
  position.noteStop();
  position.replace(&inBetween);
  position.cycle(second + 3 * cycleLength);
  speakers.clock.nsec = second + 2 * cycleLength;
  speakers.clock.position += 1024;
  position.replace(&speakers);
  EXPECT_EQ(unheard(), cycleLength) << "though a cycle of the other one came later";

  position.replace(&inBetween);
  speakers.clock.nsec = 2 * second + 1;
  speakers.clock.position += 1024;
  position.replace(&speakers);
  EXPECT_EQ(unheard(), 0U) << "it was stopped once";
}

TEST_F(ChangeOfDriver, aStoppedDriverThatCountsByTheTimeRanNoLongerThanThatSinceTheStop) {
  const spa_io_position inBetween = driver(2, second + 1);
  position.noteStop();
  position.replace(&inBetween);
  speakers.clock.nsec = second + cycleLength + 1;
  speakers.clock.position += 1'000'000;
  position.replace(&speakers);
  EXPECT_EQ(unheard(), 3 * cycleLength) << "two of its own, one of the other";
}

TEST_F(ChangeOfDriver, aStoppedDriverThatHasNotBegunLeavesNothingUnheard) {
  const spa_io_position inBetween = driver(2, second - 1);
  position.noteStop();
  position.replace(&inBetween);
  position.replace(&speakers);
  EXPECT_EQ(unheard(), 0U);
}

TEST(GraphPosition, aStreamThatHasNotBegunLeavesNothingUnheard) {
  const spa_io_position one = driver(1, 1'000'000'000);
  const spa_io_position other = driver(2, 2'000'000'000);
  GraphPosition position;
  position.replace(&one);
  position.replace(&other);
  EXPECT_EQ(position.cycle(1)->unheard, 0U);
}

/// An area whose reader is held up in the midst of reading it.
class HeldArea {
 public:
  HeldArea() {
    struct sigaction action{};
    action.sa_handler = &HeldArea::hold;
    sigaction(SIGSEGV, &action, &former_);
    memory_ = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  }
  ~HeldArea() {
    munmap(memory_, size);
    sigaction(SIGSEGV, &former_, nullptr);
  }
  HeldArea(const HeldArea&) = delete;
  HeldArea& operator=(const HeldArea&) = delete;

  const spa_io_position* area() const { return static_cast<const spa_io_position*>(memory_); }
  /// From now on.
  void holdReaders() {
    isHolding_ = false;
    isReleased_ = false;
    mprotect(memory_, size, PROT_NONE);
  }
  void waitForReader() const {
    while (!isHolding_) {
      std::this_thread::yield();
    }
  }
  void release() { isReleased_ = true; }

 private:
  static constexpr std::size_t size = sizeof(spa_io_position);

  static void hold(int /*signal*/) {
    isHolding_ = true;
    while (!isReleased_) {
    }
    mprotect(memory_, size, PROT_READ);
  }

  static inline void* memory_ = nullptr;
  static inline std::atomic<bool> isHolding_ = false;
  static inline std::atomic<bool> isReleased_ = false;
  struct sigaction former_{};
};

TEST(GraphPosition, anAreaIsReplacedWhenWhoReadsItHasDone) {
  HeldArea held;
  const spa_io_position next = driver(2, 1);
  GraphPosition position;
  position.replace(held.area());
  held.holdReaders();
  std::thread dataThread([&] { position.cycle(later); });
  held.waitForReader();
  std::atomic<bool> isReplaced = false;
  std::thread replacing([&] {
    position.replace(&next);
    isReplaced = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_FALSE(isReplaced);
  held.release();
  replacing.join();
  dataThread.join();
  EXPECT_EQ(position.cycle(later)->clockId, 2U);
}

TEST(GraphPosition, nobodyReadsAnAreaThatWasReplaced) {
  constexpr std::uint32_t goneId = 999;
  constexpr std::uint64_t enoughToMeet = 1'000'000;
  std::vector<spa_io_position> areas(2);
  GraphPosition position;
  position.replace(&areas[0]);
  std::atomic<bool> isOver = false;
  std::atomic<std::uint64_t> readsOfGone = 0;
  std::atomic<std::uint64_t> reads = 0;
  std::thread dataThread([&] {
    while (!isOver) {
      const auto cycle = position.cycle(1);
      reads += 1;
      readsOfGone += cycle && cycle->clockId == goneId ? 1 : 0;
    }
  });
  for (std::size_t round = 0; reads < enoughToMeet; ++round) {
    spa_io_position& next = areas[(round + 1) % 2];
    next.clock.id = 1;
    position.replace(&next);
    areas[round % 2].clock.id = goneId;  // A race here is what the thread sanitizer looks for.
  }
  isOver = true;
  dataThread.join();
  EXPECT_EQ(readsOfGone, 0U);
}

}  // namespace
}  // namespace audrel::linuxos
