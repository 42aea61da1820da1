#pragma once

#include "platform/Foundation.h"

namespace audrel::linuxos {

class Clock final : public NS::Clock {
 public:
  NS::Date now() override;
};

}  // namespace audrel::linuxos
