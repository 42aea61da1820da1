// What our declarations say about ownership, put to use as a caller or an implementor of them
// would: a wrong one compiles, and frees too early or never. Where bytes are read after their
// owner, it is the address sanitizer that sees it.

#import <AppKit/AppKit.h>
#import <CoreAudio/CATapDescription.h>
#import <dispatch/dispatch.h>
#import <os/log.h>
#include <signal.h>
#include <string.h>

#include "tests/macos/execution/MacTest.h"
#include "tests/macos/runtime/Runtime.h"

// Implementors of the declared properties, whose accessors the compiler writes from the
// declarations.

@interface DeclaredMenuItem : NSMenuItem
@end

@implementation DeclaredMenuItem
@synthesize target = _declaredTarget;
@end

@interface DeclaredMenu : NSMenu
@end

@implementation DeclaredMenu
@synthesize delegate = _declaredDelegate;
@end

@interface DeclaredApplication : NSApplication
@end

@implementation DeclaredApplication
@synthesize delegate = _declaredDelegate;
@end

@interface DeclaredButton : NSButton
@end

@implementation DeclaredButton
@synthesize title = _declaredTitle;
@end

@interface DeclaredAlert : NSAlert
@end

@implementation DeclaredAlert
@synthesize messageText = _declaredMessageText;
@synthesize informativeText = _declaredInformativeText;
@end

@interface DeclaredTap : CATapDescription
@end

@implementation DeclaredTap
@synthesize name = _declaredName;
@synthesize UUID = _declaredUUID;
@synthesize processes = _declaredProcesses;
@end

@interface Original : NSObject
@end

@implementation Original

- (id)copy {
  return @"a copy";
}

@end

namespace audrel::macos {
namespace {

NSString* made(const char* text) {
  return [[NSString alloc] initWithBytes:text length:strlen(text) encoding:NSUTF8StringEncoding];
}

/// Whether `set` leaves an object to nobody but a weak reference, which `get` then reads.
template <typename Set, typename Get>
bool isWeak(Set set, Get get) {
  @autoreleasepool {
    bool wasThere = false;
    @autoreleasepool {
      NSObject* object = [[NSObject alloc] init];
      set(object);
      wasThere = get() == object;
    }
    return wasThere && get() == nil;
  }
}

/// Whether `get` reads a copy of what is given to `set`.
template <typename Set, typename Get>
bool isACopy(Set set, Get get) {
  @autoreleasepool {
    set([[Original alloc] init]);
    const id kept = get();
    return [kept class] != [Original class] && strcmp([kept UTF8String], "a copy") == 0;
  }
}

class DeclarationsTest : public MacTest {};

TEST_F(DeclarationsTest, bytesOfAStringOutliveItsLastReference) {
  @autoreleasepool {
    const char* bytes = nullptr;
    {
      NSString* text = made("long enough to live on the heap, far from the string itself");
      bytes = text.UTF8String;
    }
    EXPECT_EQ(strlen(bytes), 59U);
  }
}

TEST_F(DeclarationsTest, thePathOfAURLOutlivesIt) {
  @autoreleasepool {
    const char* path = nullptr;
    {
      NSURL* url = nil;
      @autoreleasepool {
        url = [NSURL fileURLWithFileSystemRepresentation:"/a/path/long/enough/for/the/heap"
                                             isDirectory:NO
                                           relativeToURL:nil];
      }
      path = url.fileSystemRepresentation;
    }
    EXPECT_STREQ(path, "/a/path/long/enough/for/the/heap");
  }
}

TEST_F(DeclarationsTest, aLogIsItsCreatorsAlone) {
  const size_t before = objcruntime::liveObjectsOf("FakeLog");
  os_log_t log = os_log_create("io.example", "test");
  const bool isMade = log != nil && objcruntime::liveObjectsOf("FakeLog") == before + 1;
  log = nil;
  EXPECT_TRUE(isMade && objcruntime::liveObjectsOf("FakeLog") == before);
}

TEST_F(DeclarationsTest, aQueueIsItsCreatorsAlone) {
  @autoreleasepool {
    dispatch_queue_t queue =
        dispatch_queue_create("a queue", dispatch_queue_attr_make_with_qos_class(
                                             DISPATCH_QUEUE_SERIAL, QOS_CLASS_USER_INITIATED, 0));
    const bool isMade = queue != nil && objcruntime::liveObjectsOf("FakeQueue") == 1;
    queue = nil;
    EXPECT_TRUE(isMade && objcruntime::liveObjectsOf("FakeQueue") == 0);
  }
}

TEST_F(DeclarationsTest, aSourceIsItsCreatorsAlone) {
  dispatch_source_t source =
      dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, SIGTERM, 0, dispatch_get_main_queue());
  const bool isMade = source != nil && objcruntime::liveObjectsOf("FakeSource") == 1;
  source = nil;
  EXPECT_TRUE(isMade && objcruntime::liveObjectsOf("FakeSource") == 0);
}

TEST_F(DeclarationsTest, aReferenceThatIsBridgedOverIsTakenOver) {
  const size_t before = objcruntime::liveObjectsOf("NSString");
  bool isThere = false;
  @autoreleasepool {
    CFStringRef owned = (__bridge_retained CFStringRef)made("text");
    NSString* text = CFBridgingRelease(owned);
    isThere = strcmp(text.UTF8String, "text") == 0;
  }
  EXPECT_TRUE(isThere && objcruntime::liveObjectsOf("NSString") == before);
}

TEST_F(DeclarationsTest, targetsAndDelegatesAreWeak) {
  NSMenuItem* item = [[DeclaredMenuItem alloc] init];
  EXPECT_TRUE(isWeak([=](id object) { item.target = object; }, [=] { return item.target; }));
  NSMenu* menu = [[DeclaredMenu alloc] init];
  EXPECT_TRUE(
      isWeak([=](id object) { menu.delegate = object; }, [=]() -> id { return menu.delegate; }));
  NSApplication* application = [[DeclaredApplication alloc] init];
  EXPECT_TRUE(isWeak([=](id object) { application.delegate = object; },
                     [=]() -> id { return application.delegate; }));
}

TEST_F(DeclarationsTest, theTextsOfButtonsAndAlertsAreCopies) {
  NSButton* button = [[DeclaredButton alloc] init];
  EXPECT_TRUE(isACopy([=](id text) { button.title = text; }, [=] { return button.title; }));
  NSAlert* alert = [[DeclaredAlert alloc] init];
  EXPECT_TRUE(
      isACopy([=](id text) { alert.messageText = text; }, [=] { return alert.messageText; }));
  EXPECT_TRUE(isACopy([=](id text) { alert.informativeText = text; },
                      [=] { return alert.informativeText; }));
}

TEST_F(DeclarationsTest, whatATapIsGivenIsACopy) {
  CATapDescription* tap = [[DeclaredTap alloc] init];
  EXPECT_TRUE(isACopy([=](id name) { tap.name = name; }, [=] { return tap.name; }));
  EXPECT_TRUE(isACopy([=](id uuid) { tap.UUID = uuid; }, [=] { return tap.UUID; }));
  EXPECT_TRUE(isACopy([=](id objects) { tap.processes = objects; }, [=] { return tap.processes; }));
}

}  // namespace
}  // namespace audrel::macos
