// The tests' own means: what they claim to see, they must be able to see.

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include "tests/macos/frameworks/FakeFoundation.h"
#include "tests/macos/frameworks/FakeMac.h"
#include "tests/macos/runtime/Runtime.h"

@interface Counted : NSObject
@property(nonatomic, strong) Counted* other;
@end

@implementation Counted
@end

namespace audrel::macos {
namespace {

class RuntimeTest : public testing::Test {
 protected:
  static std::size_t live() { return objcruntime::liveObjectsOf("Counted"); }

  fakemac::ScopedMac mac;
};

TEST_F(RuntimeTest, aCycleOfStrongReferencesIsSeenToLive) {
  Counted* first = [[Counted alloc] init];
  __weak Counted* seen = first;
  @autoreleasepool {
    first.other = [[Counted alloc] init];
    first.other.other = first;
  }
  first = nil;
  EXPECT_EQ(live(), 2U);
  @autoreleasepool {
    seen.other = nil;
  }
  EXPECT_EQ(live(), 0U);
}

TEST_F(RuntimeTest, anAutoreleaseWithoutPoolIsCounted) {
  const std::size_t before = objcruntime::autoreleasedWithoutPool();
  (void)NSUserDefaults.standardUserDefaults;
  EXPECT_EQ(objcruntime::autoreleasedWithoutPool(), before + 1);
}

TEST_F(RuntimeTest, aPoolThatAnExceptionLeavesBehindEndsWithTheOneAroundIt) {
  const std::size_t before = objcruntime::liveObjects();
  const std::size_t without = objcruntime::autoreleasedWithoutPool();
  @autoreleasepool {
    try {
      @autoreleasepool {
        [NSMutableArray array];
        throw 1;
      }
    } catch (int) {
      EXPECT_EQ(objcruntime::liveObjects(), before + 1);
    }
  }
  EXPECT_EQ(objcruntime::liveObjects(), before);
  (void)NSUserDefaults.standardUserDefaults;
  EXPECT_EQ(objcruntime::autoreleasedWithoutPool(), without + 1);
}

TEST_F(RuntimeTest, anUnknownSelectorEndsTheProcess) {
  id object = [[Counted alloc] init];
  EXPECT_DEATH([object addObject:@"x"], "Counted addObject:.: unrecognized selector");
}

}  // namespace
}  // namespace audrel::macos
