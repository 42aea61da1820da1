#include "platform/linux/system/SerialQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/system/Dispatch.h"

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;

std::shared_ptr<dispatch::Queue> makeQueue() {
  return Dispatch().makeQueue("io.example.test.writer", dispatch::QualityOfService::userInitiated);
}

/// Submits `work` in an item of its own, which lives until it has run.
template <typename Work>
void submit(dispatch::Queue& queue, Work work) {
  auto item = std::make_unique<dispatch::WorkItem>();
  auto& submitted = *item;
  submitted.assign([owned = std::move(item), work = std::move(work)]() mutable { work(); });
  queue.async(submitted);
}

TEST(SerialQueue, itemsOfOneProducerRunInTheirOrder) {
  const auto queue = makeQueue();
  std::vector<int> ran;
  for (int i = 0; i < 1000; ++i) {
    submit(*queue, [&ran, i] { ran.push_back(i); });
  }
  queue->sync([] {});
  ASSERT_EQ(ran.size(), 1000U);
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(ran[static_cast<std::size_t>(i)], i);
  }
}

TEST(SerialQueue, anItemSubmittedAfterAnotherThreadsItemRunsAfterIt) {
  const auto queue = makeQueue();
  // Two threads take turns, so each submission happens after the other's: the queue must keep that
  // one order, not just the order of each thread.
  constexpr int turns = 2000;
  std::atomic<int> turn = 0;
  std::vector<int> ran;
  const auto produce = [&](int remainder) {
    for (int i = remainder; i < turns; i += 2) {
      while (turn.load() != i) {
        std::this_thread::yield();
      }
      submit(*queue, [&ran, i] { ran.push_back(i); });
      turn.store(i + 1);
    }
  };
  std::thread even(produce, 0);
  std::thread odd(produce, 1);
  even.join();
  odd.join();
  queue->sync([&ran] { ran.push_back(-1); });
  ASSERT_EQ(ran.size(), static_cast<std::size_t>(turns) + 1);
  EXPECT_EQ(ran.back(), -1);
  for (int i = 0; i < turns; ++i) {
    EXPECT_EQ(ran[static_cast<std::size_t>(i)], i);
  }
}

TEST(SerialQueue, itemsOfManyThreadsAllRunOneAtATime) {
  const auto queue = makeQueue();
  constexpr int threads = 4;
  constexpr int each = 5000;
  std::array<int, threads> next{};
  int plainCount = 0;  // the thread sanitizer would report two items at once
  bool inOrder = true;
  std::vector<std::thread> producers;
  producers.reserve(threads);
  for (int t = 0; t < threads; ++t) {
    producers.emplace_back([&, t] {
      for (int i = 0; i < each; ++i) {
        submit(*queue, [&, t, i] {
          inOrder = inOrder && next.at(static_cast<std::size_t>(t)) == i;
          ++next.at(static_cast<std::size_t>(t));
          ++plainCount;
        });
      }
    });
  }
  for (auto& producer : producers) {
    producer.join();
  }
  queue->sync([] {});
  EXPECT_EQ(plainCount, threads * each);
  EXPECT_TRUE(inOrder);
}

TEST(SerialQueue, syncWaitsForWhatWasSubmittedBefore) {
  const auto queue = makeQueue();
  bool slowDone = false;
  submit(*queue, [&slowDone] {
    std::this_thread::sleep_for(20ms);
    slowDone = true;
  });
  bool seen = false;
  queue->sync([&] { seen = slowDone; });
  EXPECT_TRUE(seen);
}

TEST(SerialQueue, workOfSyncIsDestroyedBeforeSyncReturns) {
  const auto queue = makeQueue();
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = held;
  std::function<void()> work = [held = std::move(held)] {};
  bool gone = false;
  // One expression, at whose end a parameter of the call dies at the latest: too late.
  queue->sync(std::move(work)), gone = watch.expired();
  EXPECT_TRUE(gone);
}

TEST(SerialQueue, syncComesFromAnyThread) {
  const auto queue = makeQueue();
  std::vector<std::thread> callers;
  callers.reserve(4);
  int count = 0;
  for (int t = 0; t < 4; ++t) {
    callers.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        queue->sync([&count] { ++count; });
      }
    });
  }
  for (auto& caller : callers) {
    caller.join();
  }
  EXPECT_EQ(count, 800);
}

TEST(SerialQueue, workIsDestroyedBeforeTheNextItemIsTaken) {
  const auto queue = makeQueue();
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = held;
  bool expired = false;
  std::promise<void> gate;
  submit(*queue, [opened = gate.get_future().share()] { opened.wait(); });
  submit(*queue, [held = std::move(held)] {});
  submit(*queue, [&] { expired = watch.expired(); });
  gate.set_value();
  queue->sync([] {});
  EXPECT_TRUE(expired);
}

TEST(SerialQueue, itemsRunBeforeTheLastReferenceIsGone) {
  int ran = 0;
  auto queue = makeQueue();
  submit(*queue, [] { std::this_thread::sleep_for(10ms); });
  for (int i = 0; i < 100; ++i) {
    submit(*queue, [&ran] { ++ran; });
  }
  queue.reset();
  EXPECT_EQ(ran, 100);
}

TEST(SerialQueue, theLastReferenceMayGoInsideAnItemAndLaterItemsStillRun) {
  for (int round = 0; round < 50; ++round) {
    auto queue = makeQueue();
    std::promise<void> gate;
    std::promise<void> last;
    auto* const raw = queue.get();
    submit(*raw, [opened = gate.get_future().share()] { opened.wait(); });
    // The queue's only reference moves into the item, so it goes when the item's work does.
    auto item = std::make_unique<dispatch::WorkItem>();
    auto& submitted = *item;
    auto* const lastPromise = &last;
    auto laterItem = std::make_unique<dispatch::WorkItem>();
    auto& later = *laterItem;
    later.assign([owned = std::move(laterItem), lastPromise] { lastPromise->set_value(); });
    submitted.assign([owned = std::move(item), queue = std::move(queue)] {});
    raw->async(submitted);
    raw->async(later);
    gate.set_value();
    EXPECT_EQ(last.get_future().wait_for(10s), std::future_status::ready);
  }
}

TEST(SerialQueue, theLastReferenceMayGoInsideSynchronousWork) {
  auto queue = makeQueue();
  auto* const raw = queue.get();
  bool ran = false;
  raw->sync([&ran, owned = std::move(queue)]() mutable {
    owned.reset();
    ran = true;
  });
  EXPECT_TRUE(ran);
}

TEST(SerialQueue, anItemMayLiveInsideWhatItsWorkOwns) {
  struct Buffer {
    dispatch::WorkItem item;
    int value = 7;
  };
  const auto queue = makeQueue();
  auto buffer = std::make_unique<Buffer>();
  int seen = 0;
  auto& item = buffer->item;
  item.assign([buffer = std::move(buffer), &seen] { seen = buffer->value; });
  queue->async(item);
  queue->sync([] {});
  EXPECT_EQ(seen, 7);
}

std::string nameOfWorker(const std::string& label) {
  const auto queue = Dispatch().makeQueue(label, dispatch::QualityOfService::userInitiated);
  std::array<char, 16> name{};
  queue->sync([&name] { pthread_getname_np(pthread_self(), name.data(), name.size()); });
  return name.data();
}

TEST(SerialQueue, theWorkersNameIsTheEndOfTheLabelThatFits) {
  EXPECT_EQ(nameOfWorker("short"), "short");
  EXPECT_EQ(nameOfWorker("io.github.audrel.Audrel.writer"), "Audrel.writer");
  EXPECT_EQ(nameOfWorker("withoutanydotsatall"), "withoutanydotsa");
}

TEST(SerialQueue, theWorkerRunsAtThePriorityOfTheProcess) {
  const auto queue = makeQueue();
  int policy = -1;
  int niceness = -1;
  queue->sync([&] {
    policy = sched_getscheduler(0);
    niceness = getpriority(PRIO_PROCESS, 0);
  });
  EXPECT_EQ(policy, sched_getscheduler(0));
  EXPECT_EQ(niceness, getpriority(PRIO_PROCESS, 0));
}

TEST(SerialQueue, theWorkerTakesNoSignals) {
  const auto queue = makeQueue();
  sigset_t mask;
  sigemptyset(&mask);
  queue->sync([&mask] { pthread_sigmask(SIG_SETMASK, nullptr, &mask); });
  EXPECT_EQ(sigismember(&mask, SIGINT), 1);
  EXPECT_EQ(sigismember(&mask, SIGTERM), 1);
  sigset_t own;
  pthread_sigmask(SIG_SETMASK, nullptr, &own);
  EXPECT_EQ(sigismember(&own, SIGINT), 0);
}

}  // namespace
}  // namespace audrel::linuxos
