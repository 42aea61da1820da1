#pragma once

// Pages are below https://developer.apple.com/documentation/corefoundation/
#include <MacTypes.h>
#include <TargetConditionals.h>
#include <os/availability.h>
#include <stddef.h>

#define CF_EXPORT extern "C"
#define CF_BRIDGED_TYPE(type) __attribute__((objc_bridge(type)))
#define CF_ENUM(type, name)                                        \
  enum __attribute__((enum_extensibility(open))) name : type name; \
  enum name : type

typedef double CGFloat;                                                              // cgfloat
typedef const void* CFTypeRef;                                                       // cftyperef
typedef const struct CF_BRIDGED_TYPE(NSString) __CFString* CFStringRef;              // cfstring
typedef const struct CF_BRIDGED_TYPE(NSDictionary) __CFDictionary* CFDictionaryRef;  // cfdictionary

struct CGPoint {  // cgpoint
  CGFloat x;
  CGFloat y;
};
struct CGSize {  // cgsize
  CGFloat width;
  CGFloat height;
};
struct CGRect {  // cgrect
  CGPoint origin;
  CGSize size;
};

typedef double CFTimeInterval;      // cftimeinterval
typedef CFStringRef CFRunLoopMode;  // cfrunloopmode

// cfrunlooprunresult
typedef CF_ENUM(SInt32, CFRunLoopRunResult) {
  kCFRunLoopRunFinished = 1,
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4,
};

CF_EXPORT const CFRunLoopMode kCFRunLoopDefaultMode;  // cfrunloopmode/defaultmode

// cfrunloopruninmode(_:_:_:)
CF_EXPORT CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                                                Boolean returnAfterSourceHandled);
