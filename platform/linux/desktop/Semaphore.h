#pragma once

#include <semaphore.h>

#include <cerrno>

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

 private:
  sem_t semaphore_;
};

}  // namespace audrel::linuxos
