#pragma once

#include "platform/Dispatch.h"

namespace audrel::macos {

/// Grand Central Dispatch. Every item runs in an autorelease pool of its own, also a synchronous
/// one, which may run on the caller's thread: what an item dropped is gone when it ends, and so the
/// file is closed when the engine's stop returns.
class Dispatch final : public dispatch::Dispatch {
 public:
  std::shared_ptr<dispatch::Queue> makeQueue(const std::string& label,
                                             dispatch::QualityOfService qos) override;
};

}  // namespace audrel::macos
