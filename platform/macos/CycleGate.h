#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

namespace audrel::macos {

/// What the cycles of an IO procedure go through, so that it can be said when none is inside: no
/// page of Core Audio's promises that a cycle in flight has ended when stop or destroy return, or
/// that none comes late. Closed at first.
class CycleGate {
 public:
  /// What was written before is visible to every cycle that enters from now on.
  void open() noexcept;

  /// When it has returned, no cycle is inside, none enters before the next `open`, and what cycles
  /// wrote is visible. Waits, except for the cycle that calls it.
  void close() noexcept;

  /// On the IO thread, without a wait. After true, `leave` ends the cycle.
  bool enter() noexcept;
  void leave() noexcept;

 private:
  static constexpr std::uint32_t isOpen = 1;
  static constexpr std::uint32_t oneCycle = 2;

  std::atomic<std::uint32_t> state_ = 0;  ///< `isOpen`, and `oneCycle` for each that is here
  std::atomic<std::thread::id> thread_ = std::thread::id();  ///< of the cycle that is inside
};

}  // namespace audrel::macos
