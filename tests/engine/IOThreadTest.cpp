// What the IO thread must not do between its callback and the queue: lock, or wait for anything.
// The program's own definitions of the functions that do so go before those of the C library.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <semaphore.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#include "bench/SilentPlatform.h"
#include "engine/RecordingEngine.h"
#include "tests/fakes/InputCycle.h"

namespace audrel {
namespace {

thread_local bool isWatched = false;
std::array<const char*, 64> seen;
std::atomic<std::size_t> seenCount = 0;

template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void note(const char* name) noexcept {
  if (isWatched) {
    seen[seenCount++ % seen.size()] = name;
  }
}

/// What `work` called of the watched functions, on a thread of its own.
template <typename Work>
std::vector<std::string> blockingCalls(Work work) {
  seenCount = 0;
  std::thread([&] {
    isWatched = true;
    work();
    isWatched = false;
  }).join();
  return {seen.begin(), seen.begin() + static_cast<std::ptrdiff_t>(seenCount.load())};
}

}  // namespace
}  // namespace audrel

#define WATCH(function, parameters, arguments)                                 \
  extern "C" int function parameters {                                         \
    static auto* const inTheLibrary = audrel::next<int parameters>(#function); \
    audrel::note(#function);                                                   \
    return inTheLibrary arguments;                                             \
  }

WATCH(pthread_mutex_lock, (pthread_mutex_t * mutex), (mutex))
WATCH(pthread_mutex_trylock, (pthread_mutex_t * mutex), (mutex))
WATCH(pthread_rwlock_rdlock, (pthread_rwlock_t * lock), (lock))
WATCH(pthread_rwlock_wrlock, (pthread_rwlock_t * lock), (lock))
WATCH(pthread_spin_lock, (pthread_spinlock_t * lock), (lock))
WATCH(pthread_cond_wait, (pthread_cond_t * condition, pthread_mutex_t* mutex), (condition, mutex))
WATCH(sem_wait, (sem_t * semaphore), (semaphore))

namespace audrel {
namespace {

using fakes::InputCycle;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(BlockingCalls, areSeen) {
  EXPECT_THAT(blockingCalls([] {
                std::mutex mutex;
                const std::lock_guard lock(mutex);
              }),
              ElementsAre("pthread_mutex_lock"));
  EXPECT_THAT(blockingCalls([] {
                std::shared_mutex mutex;
                const std::shared_lock lock(mutex);
              }),
              ElementsAre("pthread_rwlock_rdlock"));
  EXPECT_THAT(blockingCalls([] {
                sem_t semaphore;
                sem_init(&semaphore, 0, 1);
                sem_wait(&semaphore);
              }),
              ElementsAre("sem_wait"));
}

TEST(IOThread, neitherLocksNorWaitsWhateverItIsHanded) {
  bench::SilentPlatform platform;
  const auto engine = RecordingEngine::make(platform.interfaces());
  engine->start(RecordingSource::allSystemAudio(), RecordingFormat::wav, "swallowed.wav");
  const auto deliver = [&](const InputCycle& input) {
    ioProcCallback(0, nullptr, &input.list(), nullptr, nullptr, nullptr, engine.get());
  };
  const InputCycle whole({4096});
  const InputCycle partial({6});
  const InputCycle empty({});
  EXPECT_THAT(blockingCalls([&] {
                for (int i = 0; i < 1000; ++i) {
                  deliver(whole);
                  deliver(partial);
                  deliver(empty);
                }
              }),
              IsEmpty());
  engine->stop();
}

}  // namespace
}  // namespace audrel
