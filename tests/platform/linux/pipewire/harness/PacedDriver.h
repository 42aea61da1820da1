#pragma once

#include <cstdint>
#include <string>

#include "tests/platform/linux/pipewire/harness/Driver.h"

namespace audrel::pwtest {

/// Drives the graph at a multiple of real time, and starts no cycle before everyone has finished
/// the last one: no cycle is ever lost, however busy the machine is. (The server's own freewheeling
/// driver goes on without a client that takes longer than a cycle of real time.) Only a cycle that
/// will never finish, since a node was taken out of the graph in the middle of it, is given up
/// after a while; whoever waited for that node has missed it.
class PacedDriver {
 public:
  /// Leads the nodes of `group`.
  PacedDriver(pw_context* context, const std::string& group, double timesRealTime);
  ~PacedDriver();
  PacedDriver(const PacedDriver&) = delete;
  PacedDriver& operator=(const PacedDriver&) = delete;

 private:
  void startCycle();
  void cycleFinished();
  void setTimer(std::int64_t due) const;

  double timesRealTime_;
  spa_source timer_{};
  Driver driver_;
  bool isLastOneOwed_ = false;  ///< this and what follows: on the data thread
  bool isCycleOpen_ = false;    ///< started and not finished
  int cyclesToSettle_ = 0;
  std::int64_t due_ = 0;  ///< of the next cycle, monotonic nanoseconds
};

}  // namespace audrel::pwtest
