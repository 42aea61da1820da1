// What the queue promises beyond every platform's (tests/contract/QueueContract.h).

#include "platform/linux/system/SerialQueue.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <array>
#include <csignal>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/system/Dispatch.h"

namespace audrel::linuxos {
namespace {

std::shared_ptr<dispatch::Queue> makeQueue() {
  return Dispatch().makeQueue("io.example.test.writer", dispatch::QualityOfService::userInitiated);
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
