#pragma once

#include <semaphore.h>

#include <cerrno>
#include <chrono>
#include <ctime>

namespace audrel::linuxos {

/// A POSIX semaphore within this process, starting at 0. Unlike `std::counting_semaphore`, it may
/// be destroyed as soon as `wait` has returned, while `post` is still on its way out.
class Semaphore {
 public:
  Semaphore() noexcept { sem_init(&semaphore_, 0, 0); }
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;
  ~Semaphore() { sem_destroy(&semaphore_); }

  /// Never waits. What was written before is visible after the `wait` that it ends.
  void post() noexcept { sem_post(&semaphore_); }

  void wait() noexcept {
    while (sem_wait(&semaphore_) != 0 && errno == EINTR) {
    }
  }

  /// Waits no longer than that; whether a `post` ended it.
  bool waitFor(std::chrono::nanoseconds duration) noexcept {
    const auto end = std::chrono::steady_clock::now().time_since_epoch() + duration;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(end);
    const timespec deadline{.tv_sec = seconds.count(), .tv_nsec = (end - seconds).count()};
    int result = 0;
    do {
      result = sem_clockwait(&semaphore_, CLOCK_MONOTONIC, &deadline);
    } while (result != 0 && errno == EINTR);
    return result == 0;
  }

 private:
  sem_t semaphore_;
};

}  // namespace audrel::linuxos
