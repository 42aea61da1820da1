#include "platform/macos/Dispatch.h"

#import <dispatch/dispatch.h>

namespace audrel::macos {
namespace {

void performItem(void* item) noexcept {
  @autoreleasepool {
    static_cast<dispatch::WorkItem*>(item)->perform();
  }
}

void performAndDestroy(void* function) noexcept {
  @autoreleasepool {
    auto& work = *static_cast<std::function<void()>*>(function);
    work();
    work = nullptr;
  }
}

class Queue final : public dispatch::Queue {
 public:
  explicit Queue(dispatch_queue_t queue) : queue_(queue) {}

  void async(dispatch::WorkItem& item) noexcept override {
    dispatch_async_f(queue_, &item, performItem);
  }

  void sync(std::function<void()> work) override {
    dispatch_sync_f(queue_, &work, performAndDestroy);
  }

 private:
  dispatch_queue_t queue_;
};

dispatch_qos_class_t qosClass(dispatch::QualityOfService qos) {
  switch (qos) {
    case dispatch::QualityOfService::userInitiated:
      return QOS_CLASS_USER_INITIATED;
  }
}

}  // namespace

std::shared_ptr<dispatch::Queue> Dispatch::makeQueue(const std::string& label,
                                                     dispatch::QualityOfService qos) {
  @autoreleasepool {
    const dispatch_queue_attr_t attributes = dispatch_queue_attr_make_with_autorelease_frequency(
        dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL, qosClass(qos), 0),
        DISPATCH_AUTORELEASE_FREQUENCY_INHERIT);
    return std::make_shared<Queue>(dispatch_queue_create(label.c_str(), attributes));
  }
}

}  // namespace audrel::macos
