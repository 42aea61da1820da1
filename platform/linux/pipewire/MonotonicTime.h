#pragma once

#include "platform/linux/pipewire/CaptureTime.h"

namespace audrel::linuxos {

/// As the system's monotonic clock tells it.
class MonotonicTime final : public CaptureTime {
 public:
  std::uint64_t now() const noexcept override;
  std::unique_ptr<Ticks> makeTicks(pw_loop* loop, std::function<void()> tick) override;
};

}  // namespace audrel::linuxos
