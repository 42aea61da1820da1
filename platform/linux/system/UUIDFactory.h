#pragma once

#include <string>

#include "platform/Foundation.h"

namespace audrel::linuxos {

/// Random UUIDs (version 4) from the kernel's random numbers.
class UUIDFactory final : public NS::UUIDFactory {
 public:
  std::string uuidString() override;
};

}  // namespace audrel::linuxos
