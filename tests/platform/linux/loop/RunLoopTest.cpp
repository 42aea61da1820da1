#include "platform/linux/loop/RunLoop.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using Time = std::chrono::steady_clock::time_point;

Time now() {
  return std::chrono::steady_clock::now();
}

/// Runs the main loop until `condition` holds; false when it does not in ten seconds.
template <typename Condition>
bool runUntil(Condition condition) {
  const Time deadline = now() + 10s;
  while (!condition() && now() < deadline) {
    if (g_main_context_iteration(nullptr, FALSE) == FALSE) {
      std::this_thread::sleep_for(200us);
    }
  }
  return condition();
}

void runFor(std::chrono::milliseconds duration) {
  const Time end = now() + duration;
  runUntil([end] { return now() >= end; });
}

TEST(RunLoop, aTimerNeverFiresEarlyNorTwiceInAnInterval) {
  RunLoop loop;
  std::vector<Time> firings;
  const Time before = now();
  const auto timer = loop.scheduleRepeatingTimer(0.02, [&firings] {
    firings.push_back(now());
    std::this_thread::sleep_for(13ms);  // fires on the grid all the same
  });
  const Time after = now();
  ASSERT_TRUE(runUntil([&firings] { return firings.size() >= 20; }));
  timer->invalidate();
  // The grid starts somewhere between `before` and `after`.
  double lastInterval = 0;
  for (const Time firing : firings) {
    const double latest = std::floor(std::chrono::duration<double>(firing - before).count() / 0.02);
    EXPECT_GT(latest, lastInterval);
    const double earliest =
        std::floor(std::chrono::duration<double>(firing - after).count() / 0.02);
    lastInterval = std::max(lastInterval + 1, earliest);
  }
}

TEST(RunLoop, aLoopThatWasBusyFiresOnceForAllThatItMissed) {
  RunLoop loop;
  int firings = 0;
  const auto timer = loop.scheduleRepeatingTimer(0.5, [&firings] { ++firings; });
  std::this_thread::sleep_for(1600ms);
  EXPECT_EQ(firings, 0);
  ASSERT_TRUE(runUntil([&firings] { return firings == 1; }));
  while (g_main_context_iteration(nullptr, FALSE) == TRUE) {
  }
  EXPECT_EQ(firings, 1);
  timer->invalidate();
}

TEST(RunLoop, aTimerMayInvalidateItselfInItsOwnBlock) {
  RunLoop loop;
  auto alive = std::make_shared<int>(0);
  const std::weak_ptr<int> watched = alive;
  std::shared_ptr<NS::Timer> timer;
  timer = loop.scheduleRepeatingTimer(0.001, [&timer, kept = std::move(alive)] {
    timer->invalidate();
    timer.reset();
    ++*kept;  // the block outlives the timer's end
  });
  ASSERT_TRUE(runUntil([&timer] { return timer == nullptr; }));
  EXPECT_TRUE(watched.expired());
  runFor(10ms);
}

TEST(RunLoop, aTimerGoesOnWithoutAnyoneHoldingIt) {
  RunLoop loop;
  int firings = 0;
  std::weak_ptr<NS::Timer> timer = loop.scheduleRepeatingTimer(0.001, [&firings] { ++firings; });
  ASSERT_TRUE(runUntil([&firings] { return firings >= 3; }));
  ASSERT_FALSE(timer.expired());
  timer.lock()->invalidate();
  EXPECT_TRUE(timer.expired());
}

TEST(RunLoop, anInvalidatedTimerFiresNoMoreAndReleasesItsBlock) {
  RunLoop loop;
  auto alive = std::make_shared<int>(0);
  const std::weak_ptr<int> watched = alive;
  int firings = 0;
  const auto timer =
      loop.scheduleRepeatingTimer(0.001, [&firings, kept = std::move(alive)] { ++firings; });
  timer->invalidate();
  timer->invalidate();
  EXPECT_TRUE(watched.expired());
  runFor(10ms);
  EXPECT_EQ(firings, 0);
}

TEST(RunLoop, aTimerMayReplaceItselfInItsOwnBlock) {
  RunLoop loop;
  int firings = 0;
  std::shared_ptr<NS::Timer> timer;
  std::function<void()> replace = [&] {
    ++firings;
    timer->invalidate();
    timer = loop.scheduleRepeatingTimer(0.001, replace);
  };
  timer = loop.scheduleRepeatingTimer(0.001, replace);
  ASSERT_TRUE(runUntil([&firings] { return firings == 5; }));
  timer->invalidate();
}

}  // namespace
}  // namespace audrel::linuxos
