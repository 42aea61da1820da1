#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <numeric>
#include <thread>
#include <utility>
#include <vector>

#include "platform/Dispatch.h"

/// What every platform's serial queue keeps. An implementation is a type with
///   dispatch::Dispatch& dispatch();
///   void letRun(dispatch::Queue&);   // what was submitted runs now, unless it runs by itself
namespace audrel::contract {

/// An item that owns itself, as a buffer owns its own.
template <typename Work>
void submit(dispatch::Queue& queue, Work work) {
  auto item = std::make_unique<dispatch::WorkItem>();
  dispatch::WorkItem& submitted = *item;
  submitted.assign([item = std::move(item), work = std::move(work)]() mutable { work(); });
  queue.async(submitted);
}

template <typename Implementation>
class QueueContract : public testing::Test {
 protected:
  std::shared_ptr<dispatch::Queue> makeQueue() {
    return implementation.dispatch().makeQueue("org.example.writer",
                                               dispatch::QualityOfService::userInitiated);
  }

  Implementation implementation;
};

TYPED_TEST_SUITE_P(QueueContract);

TYPED_TEST_P(QueueContract, itemsRunInTheOrderInWhichTheyWereSubmitted) {
  const auto queue = this->makeQueue();
  std::vector<int> ran;
  for (int i = 0; i < 2000; ++i) {
    submit(*queue, [&ran, i] { ran.push_back(i); });
  }
  queue->sync([] {});
  std::vector<int> inOrder(2000);
  std::iota(inOrder.begin(), inOrder.end(), 0);
  EXPECT_EQ(ran, inOrder);
}

TYPED_TEST_P(QueueContract, thereIsOneOrderForAllProducersWhicheverThreadSubmits) {
  const auto queue = this->makeQueue();
  constexpr int producers = 3;
  constexpr int turns = 3000;
  std::vector<int> ran;
  // The producers take turns, so that every submission happens after all before it.
  std::atomic<int> turn = 0;
  const auto produce = [&](int own) {
    for (int i = own; i < turns; i += producers) {
      while (turn.load(std::memory_order_acquire) != i) {
        std::this_thread::yield();
      }
      submit(*queue, [&ran, i] { ran.push_back(i); });
      turn.store(i + 1, std::memory_order_release);
    }
  };
  std::vector<std::thread> threads;
  for (int own = 0; own < producers; ++own) {
    threads.emplace_back(produce, own);
  }
  for (auto& thread : threads) {
    thread.join();
  }
  queue->sync([] {});
  std::vector<int> inOrder(turns);
  std::iota(inOrder.begin(), inOrder.end(), 0);
  EXPECT_EQ(ran, inOrder);
}

TYPED_TEST_P(QueueContract, itemsOfProducersThatRaceAllRunOneAtATime) {
  const auto queue = this->makeQueue();
  constexpr int each = 3000;
  int count = 0;  // plain: two items at once would lose some, and the thread sanitizer says so
  std::vector<std::thread> threads;
  for (int producer = 0; producer < 3; ++producer) {
    threads.emplace_back([&] {
      for (int i = 0; i < each; ++i) {
        submit(*queue, [&count] { ++count; });
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  queue->sync([] {});
  EXPECT_EQ(count, 3 * each);
}

TYPED_TEST_P(QueueContract, whatTheSubmitterWroteIsSeenByTheItemAndWhatTheItemWroteAfterSync) {
  const auto queue = this->makeQueue();
  std::vector<int> plain;
  for (int i = 0; i < 500; ++i) {
    plain.push_back(i);
    submit(*queue, [&plain] { plain.back() *= 2; });
    queue->sync([&plain] { plain.back() += 1; });
    ASSERT_EQ(plain.back(), 2 * i + 1);
  }
}

TYPED_TEST_P(QueueContract, anItemIsDestroyedBeforeTheNextIsTaken) {
  const auto queue = this->makeQueue();
  int alive = 0;
  int most = 0;
  struct Counted {
    explicit Counted(int& count) : count_(count) {}
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --count_; }
    int& count_;
  };
  // Each item starts what only its own destruction ends.
  for (int i = 0; i < 500; ++i) {
    submit(*queue, [&alive, &most, held = std::unique_ptr<Counted>()]() mutable {
      ++alive;
      most = std::max(most, alive);
      held = std::make_unique<Counted>(alive);
    });
  }
  queue->sync([] {});
  EXPECT_EQ(most, 1);
  EXPECT_EQ(alive, 0);
}

TYPED_TEST_P(QueueContract, anItemIsDestroyedBeforeASyncBehindItRuns) {
  const auto queue = this->makeQueue();
  for (int round = 0; round < 200; ++round) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> weak = held;
    submit(*queue, [held = std::move(held)] {});
    bool isGone = false;
    queue->sync([&] { isGone = weak.expired(); });
    ASSERT_TRUE(isGone);
  }
}

TYPED_TEST_P(QueueContract, theWorkOfASyncIsDestroyedBeforeSyncReturns) {
  const auto queue = this->makeQueue();
  for (int round = 0; round < 200; ++round) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> weak = held;
    std::function<void()> work = [held = std::move(held)] {};
    bool isGone = false;
    // In one expression with the call, at whose end its parameter is destroyed at the latest.
    (queue->sync(std::move(work)), isGone = weak.expired());
    ASSERT_TRUE(isGone);
  }
}

TYPED_TEST_P(QueueContract, syncReturnsOnlyWhenItsWorkIsDone) {
  const auto queue = this->makeQueue();
  bool isDone = false;
  queue->sync([&isDone] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    isDone = true;
  });
  EXPECT_TRUE(isDone);
}

TYPED_TEST_P(QueueContract, anItemMaySubmitAnotherWhichRunsAfterWhatWaits) {
  const auto queue = this->makeQueue();
  std::vector<int> ran;
  std::promise<void> submitted;
  submit(*queue, [&, opened = submitted.get_future().share()] {
    opened.wait();
    submit(*queue, [&ran] { ran.push_back(3); });
    ran.push_back(1);
  });
  submit(*queue, [&ran] { ran.push_back(2); });
  submitted.set_value();
  queue->sync([] {});
  queue->sync([] {});
  EXPECT_EQ(ran, (std::vector{1, 2, 3}));
}

TYPED_TEST_P(QueueContract, itemsSubmittedBeforeTheLastReferenceGoesStillRun) {
  for (int round = 0; round < 50; ++round) {
    auto queue = this->makeQueue();
    std::promise<int> last;
    auto result = last.get_future();
    for (int i = 0; i < 50; ++i) {
      submit(*queue, [i, &last] {
        if (i == 49) {
          last.set_value(i);
        }
      });
    }
    queue.reset();
    ASSERT_EQ(result.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    ASSERT_EQ(result.get(), 49);
  }
}

TYPED_TEST_P(QueueContract, theLastReferenceMayGoInsideAnItemAndThoseBehindItStillRun) {
  for (int round = 0; round < 50; ++round) {
    auto owned = this->makeQueue();
    dispatch::Queue& queue = *owned;
    std::promise<void> everythingIsSubmitted;
    auto behind = std::make_shared<std::promise<void>>();
    auto ran = behind->get_future();
    submit(queue,
           [owned = std::move(owned), go = everythingIsSubmitted.get_future().share()]() mutable {
             go.wait();
             owned.reset();
           });
    submit(queue, [behind] { behind->set_value(); });
    everythingIsSubmitted.set_value();
    this->implementation.letRun(queue);
    ASSERT_EQ(ran.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  }
}

REGISTER_TYPED_TEST_SUITE_P(
    QueueContract, itemsRunInTheOrderInWhichTheyWereSubmitted,
    thereIsOneOrderForAllProducersWhicheverThreadSubmits, itemsOfProducersThatRaceAllRunOneAtATime,
    whatTheSubmitterWroteIsSeenByTheItemAndWhatTheItemWroteAfterSync,
    anItemIsDestroyedBeforeTheNextIsTaken, anItemIsDestroyedBeforeASyncBehindItRuns,
    theWorkOfASyncIsDestroyedBeforeSyncReturns, syncReturnsOnlyWhenItsWorkIsDone,
    anItemMaySubmitAnotherWhichRunsAfterWhatWaits, itemsSubmittedBeforeTheLastReferenceGoesStillRun,
    theLastReferenceMayGoInsideAnItemAndThoseBehindItStillRun);

}  // namespace audrel::contract
