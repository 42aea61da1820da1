#include "tests/macos/execution/Declared.h"

#import <AppKit/AppKit.h>
#import <CoreAudio/CATapDescription.h>
#import <dispatch/dispatch.h>
#import <os/log.h>
#include <signal.h>
#include <string.h>

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

namespace audrel::macos::declared {
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

bool isACopy(id object) {
  return [object class] != [Original class] && strcmp([object UTF8String], "a copy") == 0;
}

}  // namespace

bool bytesOfAStringOutliveItsLastReference() {
  @autoreleasepool {
    const char* bytes = nullptr;
    {
      NSString* text = made("long enough to live on the heap, far from the string itself");
      bytes = text.UTF8String;
    }
    return strlen(bytes) == 59;
  }
}

bool thePathOfAURLOutlivesIt() {
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
    return strcmp(path, "/a/path/long/enough/for/the/heap") == 0;
  }
}

bool aLogIsItsCreatorsAlone() {
  const size_t before = objcruntime::liveObjectsOf("FakeLog");
  os_log_t log = os_log_create("io.example", "test");
  const bool isMade = log != nil && objcruntime::liveObjectsOf("FakeLog") == before + 1;
  log = nil;
  return isMade && objcruntime::liveObjectsOf("FakeLog") == before;
}

bool aQueueIsItsCreatorsAlone() {
  @autoreleasepool {
    dispatch_queue_t queue =
        dispatch_queue_create("a queue", dispatch_queue_attr_make_with_qos_class(
                                             DISPATCH_QUEUE_SERIAL, QOS_CLASS_USER_INITIATED, 0));
    const bool isMade = queue != nil && objcruntime::liveObjectsOf("FakeQueue") == 1;
    queue = nil;
    return isMade && objcruntime::liveObjectsOf("FakeQueue") == 0;
  }
}

bool aSourceIsItsCreatorsAlone() {
  dispatch_source_t source =
      dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, SIGTERM, 0, dispatch_get_main_queue());
  const bool isMade = source != nil && objcruntime::liveObjectsOf("FakeSource") == 1;
  source = nil;
  return isMade && objcruntime::liveObjectsOf("FakeSource") == 0;
}

bool aReferenceThatIsBridgedOverIsTakenOver() {
  const size_t before = objcruntime::liveObjectsOf("NSString");
  bool isThere = false;
  @autoreleasepool {
    CFStringRef owned = (__bridge_retained CFStringRef)made("text");
    NSString* text = CFBridgingRelease(owned);
    isThere = strcmp(text.UTF8String, "text") == 0;
  }
  return isThere && objcruntime::liveObjectsOf("NSString") == before;
}

bool theTargetOfAnItemIsWeak() {
  NSMenuItem* item = [[DeclaredMenuItem alloc] init];
  return isWeak([=](id object) { item.target = object; }, [=] { return item.target; });
}

bool theDelegateOfAMenuIsWeak() {
  NSMenu* menu = [[DeclaredMenu alloc] init];
  return isWeak([=](id object) { menu.delegate = object; }, [=]() -> id { return menu.delegate; });
}

bool theDelegateOfTheApplicationIsWeak() {
  NSApplication* application = [[DeclaredApplication alloc] init];
  return isWeak([=](id object) { application.delegate = object; },
                [=]() -> id { return application.delegate; });
}

bool theTitleOfAButtonIsACopy() {
  @autoreleasepool {
    NSButton* button = [[DeclaredButton alloc] init];
    button.title = static_cast<id>([[Original alloc] init]);
    return isACopy(button.title);
  }
}

bool theMessageOfAnAlertIsACopy() {
  @autoreleasepool {
    NSAlert* alert = [[DeclaredAlert alloc] init];
    alert.messageText = static_cast<id>([[Original alloc] init]);
    return isACopy(alert.messageText);
  }
}

bool theInformationOfAnAlertIsACopy() {
  @autoreleasepool {
    NSAlert* alert = [[DeclaredAlert alloc] init];
    alert.informativeText = static_cast<id>([[Original alloc] init]);
    return isACopy(alert.informativeText);
  }
}

bool theNameOfATapIsACopy() {
  @autoreleasepool {
    CATapDescription* tap = [[DeclaredTap alloc] init];
    tap.name = static_cast<id>([[Original alloc] init]);
    return isACopy(tap.name);
  }
}

bool theUUIDOfATapIsACopy() {
  @autoreleasepool {
    CATapDescription* tap = [[DeclaredTap alloc] init];
    tap.UUID = static_cast<id>([[Original alloc] init]);
    return isACopy(tap.UUID);
  }
}

bool theProcessesOfATapAreACopy() {
  @autoreleasepool {
    CATapDescription* tap = [[DeclaredTap alloc] init];
    tap.processes = static_cast<id>([[Original alloc] init]);
    return isACopy(tap.processes);
  }
}

}  // namespace audrel::macos::declared
