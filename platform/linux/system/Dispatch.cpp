#include "platform/linux/system/Dispatch.h"

namespace audrel::linuxos {

std::shared_ptr<dispatch::Queue> Dispatch::makeQueue(const std::string& label,
                                                     dispatch::QualityOfService /*qos*/) {
  return std::make_shared<SerialQueue>(label, longWait_);
}

}  // namespace audrel::linuxos
