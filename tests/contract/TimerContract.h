#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "platform/Foundation.h"

/// What every platform's timers keep. An implementation is a type with
///   NS::RunLoop& runLoop();
///   void letRunLoopRun();   // for 20 ms, or as if
namespace audrel::contract {

template <typename Implementation>
class TimerContract : public testing::Test {
 protected:
  static constexpr double interval = 0.005;  // seconds

  /// Within ten seconds: a machine may have much else to do.
  template <typename Condition>
  bool runUntil(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
      implementation.letRunLoopRun();
    }
    return condition();
  }

  Implementation implementation;
  NS::RunLoop& loop = implementation.runLoop();
};

TYPED_TEST_SUITE_P(TimerContract);

TYPED_TEST_P(TimerContract, aTimerFiresAgainAndAgainUntilItIsInvalidated) {
  int fired = 0;
  const auto timer = this->loop.scheduleRepeatingTimer(this->interval, [&fired] { ++fired; });
  EXPECT_EQ(fired, 0);
  EXPECT_TRUE(this->runUntil([&fired] { return fired >= 3; }));
  timer->invalidate();
  const int before = fired;
  this->implementation.letRunLoopRun();
  EXPECT_EQ(fired, before);
}

TYPED_TEST_P(TimerContract, aTimerThatWasInvalidatedAtOnceNeverFires) {
  int fired = 0;
  const auto timer = this->loop.scheduleRepeatingTimer(this->interval, [&fired] { ++fired; });
  timer->invalidate();
  this->implementation.letRunLoopRun();
  EXPECT_EQ(fired, 0);
}

TYPED_TEST_P(TimerContract, timersFireIndependently) {
  int first = 0;
  int second = 0;
  const auto one = this->loop.scheduleRepeatingTimer(this->interval, [&first] { ++first; });
  const auto two = this->loop.scheduleRepeatingTimer(this->interval, [&second] { ++second; });
  EXPECT_TRUE(this->runUntil([&] { return first >= 2 && second >= 2; }));
  one->invalidate();
  const int before = first;
  const int more = second + 2;
  EXPECT_TRUE(this->runUntil([&] { return second >= more; }));
  EXPECT_EQ(first, before);
  two->invalidate();
}

TYPED_TEST_P(TimerContract, theRunLoopHoldsATimerThatNobodyElseHolds) {
  int fired = 0;
  // Held by the timer's block alone.
  auto timer = std::make_shared<std::shared_ptr<NS::Timer>>();
  *timer = this->loop.scheduleRepeatingTimer(this->interval, [&fired, held = timer] {
    if (++fired == 3) {
      (*held)->invalidate();
    }
  });
  timer.reset();
  EXPECT_TRUE(this->runUntil([&fired] { return fired >= 3; }));
  this->implementation.letRunLoopRun();
  EXPECT_EQ(fired, 3);
}

TYPED_TEST_P(TimerContract, aBlockThatInvalidatesItsTimerIsNotDestroyedBeforeItReturns) {
  std::shared_ptr<NS::Timer> timer;
  std::string seen;
  const std::string own = "a text that is too long to stand in the string itself";
  timer = this->loop.scheduleRepeatingTimer(this->interval, [&, own] {
    timer->invalidate();
    seen = own;
  });
  EXPECT_TRUE(this->runUntil([&] { return !seen.empty(); }));
  EXPECT_EQ(seen, own);
}

REGISTER_TYPED_TEST_SUITE_P(TimerContract, aTimerFiresAgainAndAgainUntilItIsInvalidated,
                            aTimerThatWasInvalidatedAtOnceNeverFires, timersFireIndependently,
                            theRunLoopHoldsATimerThatNobodyElseHolds,
                            aBlockThatInvalidatesItsTimerIsNotDestroyedBeforeItReturns);

}  // namespace audrel::contract
