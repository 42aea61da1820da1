#include "platform/linux/pipewire/GraphPosition.h"

#include <gtest/gtest.h>
#include <spa/node/io.h>

#include <atomic>
#include <thread>
#include <vector>

namespace audrel::linuxos {
namespace {

TEST(GraphPosition, tellsOfNoCycleWithoutAnArea) {
  GraphPosition position;
  EXPECT_FALSE(position.cycle());
  spa_io_position area{};
  position.replace(&area);
  EXPECT_TRUE(position.cycle());
  position.replace(nullptr);
  EXPECT_FALSE(position.cycle());
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
  const auto cycle = position.cycle();
  ASSERT_TRUE(cycle);
  EXPECT_EQ(cycle->clockId, 7U);
  EXPECT_EQ(cycle->position, 4096U);
  EXPECT_EQ(cycle->duration, 1024U);
  EXPECT_EQ(cycle->rate, 48000U);
  EXPECT_EQ(cycle->nsec, 123U);
}

TEST(GraphPosition, nobodyReadsAnAreaThatWasReplaced) {
  constexpr std::uint32_t goneId = 999;
  std::vector<spa_io_position> areas(2);
  GraphPosition position;
  position.replace(&areas[0]);
  std::atomic<bool> isOver = false;
  std::atomic<std::uint64_t> readsOfGone = 0;
  std::atomic<std::uint64_t> reads = 0;
  std::thread dataThread([&] {
    while (!isOver) {
      const auto cycle = position.cycle();
      reads += 1;
      readsOfGone += cycle && cycle->clockId == goneId ? 1 : 0;
    }
  });
  for (std::size_t round = 0; round < 200'000 || reads < 1000; ++round) {
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
