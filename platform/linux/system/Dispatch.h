#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/Dispatch.h"
#include "platform/linux/system/SerialQueue.h"

namespace audrel::linuxos {

/// Makes `SerialQueue`s. Quality of service is left to the system's scheduler: the workers run at
/// the priority of the thread that made them.
class Dispatch final : public dispatch::Dispatch {
 public:
  explicit Dispatch(SerialQueue::LongWait longWait = {}) : longWait_(std::move(longWait)) {}

  std::shared_ptr<dispatch::Queue> makeQueue(const std::string& label,
                                             dispatch::QualityOfService qos) override;

 private:
  SerialQueue::LongWait longWait_;
};

}  // namespace audrel::linuxos
