#include "platform/macos/CycleGate.h"

#include <chrono>

namespace audrel::macos {

static_assert(std::atomic<std::thread::id>::is_always_lock_free);

void CycleGate::open() noexcept {
  state_.fetch_or(isOpen, std::memory_order_release);
}

void CycleGate::close() noexcept {
  state_.fetch_and(~isOpen, std::memory_order_relaxed);
  // Only a cycle on this very thread can have put its id there.
  const bool isInside = thread_.load(std::memory_order_relaxed) == std::this_thread::get_id();
  const std::uint32_t own = isInside ? oneCycle : 0;
  // Asked again and again: to wake whoever waits is nothing for the IO thread.
  while (state_.load(std::memory_order_acquire) > own) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

bool CycleGate::enter() noexcept {
  if ((state_.fetch_add(oneCycle, std::memory_order_acquire) & isOpen) == 0) {
    state_.fetch_sub(oneCycle, std::memory_order_relaxed);
    return false;
  }
  thread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
  return true;
}

void CycleGate::leave() noexcept {
  thread_.store({}, std::memory_order_relaxed);
  state_.fetch_sub(oneCycle, std::memory_order_release);
}

}  // namespace audrel::macos
