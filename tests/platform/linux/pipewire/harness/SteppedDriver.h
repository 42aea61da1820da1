#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "tests/platform/linux/pipewire/harness/Driver.h"

namespace audrel::pwtest {

/// Drives the graph as its standard input says, a line at a time, and stands still in between:
///
///   settle      waits until every client has handled all that the server has told it; is answered
///               with "runs", or "pauses" when the graph does not run
///   cycle NSEC  makes one cycle, which begins at that time of the monotonic clock; is answered
///               when everyone has finished it, with how many nanoseconds long it is
///   begin NSEC  the same, but is answered at once, for whoever is late to be late
class SteppedDriver {
 public:
  /// Leads the nodes of `group`. The loop ends when standard input does.
  SteppedDriver(pw_main_loop* loop, pw_context* context, const std::string& group);
  ~SteppedDriver();
  SteppedDriver(const SteppedDriver&) = delete;
  SteppedDriver& operator=(const SteppedDriver&) = delete;

 private:
  struct Ping;

  struct Cycle {
    std::int64_t start = 0;  ///< monotonic nanoseconds
    bool isAwaited = false;
  };

  void readCommand();
  void settle();
  void pingAll();
  void answered(const Ping& ping);
  void startCycle(const Cycle& cycle);
  void cycleFinished();

  static const pw_resource_events resourceEvents;

  pw_main_loop* loop_;
  pw_context* context_;
  spa_source* input_;
  Driver driver_;
  std::list<Ping> pings_;  ///< not yet answered
  int roundsToGo_ = 0;

  // On the data thread:
  bool isAwaited_ = false;
  bool isUnderWay_ = false;     ///< a cycle has not finished
  bool isLastOneOwed_ = false;  ///< while one starts although the last one has not finished
  std::int64_t cycleLength_ = 0;
};

}  // namespace audrel::pwtest
