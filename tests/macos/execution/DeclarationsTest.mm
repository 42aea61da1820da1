// What our declarations say about ownership, each seen at work: a wrong one compiles, and frees too
// early or never.

#import <dispatch/dispatch.h>
#import <os/log.h>

#include "tests/macos/execution/MacTest.h"

namespace audrel::macos {
namespace {

class DeclarationsTest : public MacTest {};

NSString* made(const char* text) {
  return [[NSString alloc] initWithBytes:text length:strlen(text) encoding:NSUTF8StringEncoding];
}

// The address sanitizer would see the freed bytes.
TEST_F(DeclarationsTest, theBytesOfAStringOutliveItsLastReferenceUntilThePoolEnds) {
  @autoreleasepool {
    const char* bytes = nullptr;
    {
      NSString* text = made("long enough to live on the heap, far from the string itself");
      bytes = text.UTF8String;
    }
    EXPECT_EQ(strlen(bytes), 59U);
  }
}

TEST_F(DeclarationsTest, thePathOfAURLOutlivesItToo) {
  @autoreleasepool {
    const char* path = nullptr;
    {
      NSURL* url = [NSURL fileURLWithFileSystemRepresentation:"/a/path/long/enough/for/the/heap"
                                                  isDirectory:NO
                                                relativeToURL:nil];
      path = url.fileSystemRepresentation;
    }
    EXPECT_STREQ(path, "/a/path/long/enough/for/the/heap");
  }
}

TEST_F(DeclarationsTest, aLogAndAQueueAreTheirCreatorsAlone) {
  os_log_t log = os_log_create("io.example", "test");
  EXPECT_EQ(objcruntime::liveObjectsOf("FakeLog"), 2U);  // the platform's own is the other
  EXPECT_NE(log, nil);
  log = nil;
  EXPECT_EQ(objcruntime::liveObjectsOf("FakeLog"), 1U);
  @autoreleasepool {
    dispatch_queue_t queue =
        dispatch_queue_create("a queue", dispatch_queue_attr_make_with_qos_class(
                                             DISPATCH_QUEUE_SERIAL, QOS_CLASS_USER_INITIATED, 0));
    EXPECT_EQ(objcruntime::liveObjectsOf("FakeQueue"), 1U);
    EXPECT_NE(queue, nil);
    queue = nil;
    EXPECT_EQ(objcruntime::liveObjectsOf("FakeQueue"), 0U);
  }
}

TEST_F(DeclarationsTest, aReferenceThatIsBridgedOverIsTakenOver) {
  @autoreleasepool {
    CFStringRef owned = (__bridge_retained CFStringRef)made("text");
    NSString* text = CFBridgingRelease(owned);
    EXPECT_STREQ(text.UTF8String, "text");
  }
  EXPECT_EQ(objcruntime::liveObjectsOf("NSString"), 0U);
}

TEST_F(DeclarationsTest, targetsAndDelegatesAreReferredToWeakly) {
  @autoreleasepool {
    NSMenuItem* item = [NSMenuItem separatorItem];
    NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
    @autoreleasepool {
      NSMenuItem* target = [NSMenuItem separatorItem];
      item.target = target;
      menu.delegate = static_cast<id<NSMenuDelegate>>(static_cast<id>(target));
      EXPECT_NE(item.target, nil);
    }
    EXPECT_EQ(item.target, nil);
    EXPECT_EQ(menu.delegate, nil);
  }
}

}  // namespace
}  // namespace audrel::macos
