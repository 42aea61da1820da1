// What the queue promises beyond every platform's (tests/contract/QueueContract.h).

#include "platform/linux/system/SerialQueue.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <array>
#include <chrono>
#include <csignal>
#include <memory>
#include <stop_token>
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

/// What was done while a synchronous item kept its caller waiting.
class LongWaits : public testing::Test {
 protected:
  void waitFor(std::chrono::milliseconds duration) {
    queue_->sync([=] { std::this_thread::sleep_for(duration); });
  }

  std::thread::id teller_;
  bool wasBlocked_ = false;
  int told_ = 0;
  int ended_ = 0;
  const std::shared_ptr<SerialQueue> queue_ =
      std::make_shared<SerialQueue>("test.writer", [this](std::stop_token stop) {
        teller_ = std::this_thread::get_id();
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        wasBlocked_ = sigismember(&blocked, SIGTERM) == 1;
        ++told_;
        while (!stop.stop_requested()) {
          std::this_thread::yield();
        }
        ++ended_;
      });
};

TEST_F(LongWaits, areToldByAThreadThatEndsWithThem) {
  waitFor(std::chrono::milliseconds(1500));
  EXPECT_EQ(told_, 1);
  EXPECT_EQ(ended_, 1);
  EXPECT_NE(teller_, std::this_thread::get_id());
  EXPECT_TRUE(wasBlocked_) << "signals are for the main thread";
  waitFor(std::chrono::milliseconds(1500));
  EXPECT_EQ(ended_, 2);
}

TEST_F(LongWaits, areThoseOfMoreThanASecond) {
  waitFor(std::chrono::milliseconds(0));
  EXPECT_EQ(told_, 0);
}

TEST(SerialQueue, theLastReferenceMayGoInSynchronousWorkThatTakesLong) {
  bool wasTold = false;
  auto queue = std::make_shared<SerialQueue>(
      "test.writer", [&wasTold](const std::stop_token&) { wasTold = true; });
  auto* const raw = queue.get();
  raw->sync([owned = std::move(queue)]() mutable {
    owned.reset();
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  });
  EXPECT_TRUE(wasTold);
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
