#pragma once

#include "platform/Foundation.h"

namespace audrel::linuxos {

/// Repeating timers on the main loop of the thread that schedules them.
///
/// A timer fires at its start plus whole intervals, by the monotonic clock. When the loop comes
/// late to it, it fires once for all that was missed and goes on at the next whole interval; what
/// passes while its own block runs is left out likewise. It fires while an alert is up, too.
class RunLoop final : public NS::RunLoop {
 public:
  std::shared_ptr<NS::Timer> scheduleRepeatingTimer(double interval,
                                                    std::function<void()> block) override;
};

}  // namespace audrel::linuxos
