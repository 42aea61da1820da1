#include "platform/linux/loop/RunLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/MainLoop.h"

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using support::runLoopUntil;
using Time = std::chrono::steady_clock::time_point;

Time now() {
  return std::chrono::steady_clock::now();
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
  ASSERT_TRUE(runLoopUntil([&firings] { return firings.size() >= 20; }));
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
  ASSERT_TRUE(runLoopUntil([&firings] { return firings == 1; }));
  support::drainLoop();
  EXPECT_EQ(firings, 1);
  timer->invalidate();
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
  support::runLoopFor(10ms);
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
  ASSERT_TRUE(runLoopUntil([&firings] { return firings == 5; }));
  timer->invalidate();
}

}  // namespace
}  // namespace audrel::linuxos
