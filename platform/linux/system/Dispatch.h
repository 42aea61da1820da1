#pragma once

#include <memory>
#include <string>

#include "platform/Dispatch.h"

namespace audrel::linuxos {

/// Makes `SerialQueue`s. Quality of service is left to the system's scheduler: the workers run at
/// the priority of the thread that made them.
class Dispatch final : public dispatch::Dispatch {
 public:
  std::shared_ptr<dispatch::Queue> makeQueue(const std::string& label,
                                             dispatch::QualityOfService qos) override;
};

}  // namespace audrel::linuxos
