#include "platform/linux/system/Dispatch.h"

#include "platform/linux/system/SerialQueue.h"

namespace audrel::linuxos {

std::shared_ptr<dispatch::Queue> Dispatch::makeQueue(const std::string& label,
                                                     dispatch::QualityOfService /*qos*/) {
  return std::make_shared<SerialQueue>(label);
}

}  // namespace audrel::linuxos
