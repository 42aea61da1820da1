#include "platform/macos/Dispatch.h"

#include "tests/macos/execution/MacTest.h"

extern "C" id objc_retainAutorelease(id object);

namespace audrel::macos {
namespace {

class DispatchTest : public MacTest {
 protected:
  /// Leaves an object in the pool that is there.
  static void leaveAnObject() {
    NSObject* object = [[NSObject alloc] init];
    objc_retainAutorelease(object);
  }

  static std::size_t objects() { return objcruntime::liveObjectsOf("NSObject"); }

  std::shared_ptr<dispatch::Queue> queue =
      Dispatch().makeQueue("a.writer", dispatch::QualityOfService::userInitiated);
};

TEST_F(DispatchTest, aQueueIsSerialUserInitiatedAndInheritsItsAutoreleaseFrequency) {
  EXPECT_EQ(journal(), (Lines{"dispatch_queue_create(a.writer, qos 25, autorelease frequency 0)"}));
}

TEST_F(DispatchTest, anItemLeavesNothingInThePoolOfTheQueuesThread) {
  dispatch::WorkItem item;
  item.assign([] { leaveAnObject(); });
  queue->async(item);
  queue->sync([] {});
  EXPECT_EQ(objects(), 0U);
}

TEST_F(DispatchTest, aSynchronousItemLeavesNothingInThePoolOfItsCaller) {
  @autoreleasepool {
    queue->sync([] { leaveAnObject(); });
    EXPECT_EQ(objects(), 0U);
  }
}

}  // namespace
}  // namespace audrel::macos
