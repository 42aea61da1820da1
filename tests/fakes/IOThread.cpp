#include "tests/fakes/IOThread.h"

#include <utility>

namespace audrel::fakes {

IOThread::IOThread(FakeHardware& hardware, std::function<void()> deliver)
    : deliver_(std::move(deliver)), thread_([this] { deliverUntilEnded(); }) {
  hardware.whenStarted = [this] { phase_.store(Phase::running, std::memory_order_release); };
  hardware.whenStopping = [this] { stop(); };
}

IOThread::~IOThread() {
  phase_.store(Phase::ended, std::memory_order_release);
  thread_.join();
}

void IOThread::deliverUntilEnded() {
  while (true) {
    switch (phase_.load(std::memory_order_acquire)) {
      case Phase::running:
        deliver_();
        break;
      case Phase::stopping:
        phase_.store(Phase::stopped, std::memory_order_release);
        break;
      case Phase::stopped:
        std::this_thread::yield();
        break;
      case Phase::ended:
        return;
    }
  }
}

void IOThread::stop() {
  Phase running = Phase::running;
  if (!phase_.compare_exchange_strong(running, Phase::stopping, std::memory_order_release,
                                      std::memory_order_relaxed)) {
    return;
  }
  while (phase_.load(std::memory_order_acquire) != Phase::stopped) {
    std::this_thread::yield();
  }
}

}  // namespace audrel::fakes
