// The tests' own means: what they claim to see, they must be able to see.

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/macos/frameworks/FakeFoundation.h"
#include "tests/macos/frameworks/FakeMac.h"
#include "tests/macos/runtime/Runtime.h"

@interface Counted : NSObject
@property(nonatomic, strong) Counted* other;
@property(nonatomic, weak) Counted* weakOther;
@end

@implementation Counted
@end

@interface Thrown : NSException
@end

@implementation Thrown
@end

@interface OtherwiseThrown : NSException
@end

@implementation OtherwiseThrown
@end

/// Larger than its declaration said when the class below was compiled.
@interface Derived : NSMutableArray {
 @public
  long _own;
}
@end

@implementation Derived
@end

namespace audrel::macos {
namespace {

class RuntimeTest : public testing::Test {
 protected:
  static std::size_t live() { return objcruntime::liveObjectsOf("Counted"); }

  fakemac::ScopedMac mac;
};

TEST_F(RuntimeTest, anObjectGoesWithItsLastReference) {
  Counted* object = [[Counted alloc] init];
  Counted* second = object;
  EXPECT_EQ(live(), 1U);
  object = nil;
  EXPECT_EQ(live(), 1U);
  EXPECT_NE(second, nil);
  second = nil;
  EXPECT_EQ(live(), 0U);
}

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

TEST_F(RuntimeTest, aWeakReferenceIsNilOnceTheObjectIsGone) {
  Counted* holder = [[Counted alloc] init];
  @autoreleasepool {
    Counted* object = [[Counted alloc] init];
    holder.weakOther = object;
    EXPECT_NE(holder.weakOther, nil);
  }
  EXPECT_EQ(holder.weakOther, nil);
}

TEST_F(RuntimeTest, anAutoreleasedObjectLivesUntilItsPoolEnds) {
  const std::size_t before = objcruntime::liveObjects();
  @autoreleasepool {
    @autoreleasepool {
      [NSMutableArray array];
      [NSMutableArray array];
    }
    EXPECT_EQ(objcruntime::liveObjects(), before);
  }
}

TEST_F(RuntimeTest, anAutoreleaseWithoutPoolIsCounted) {
  const std::size_t before = objcruntime::autoreleasedWithoutPool();
  (void)NSUserDefaults.standardUserDefaults;
  EXPECT_EQ(objcruntime::autoreleasedWithoutPool(), before + 1);
}

TEST_F(RuntimeTest, variablesOfADerivedClassLieBehindThoseOfItsLargerBase) {
  Derived* array = [[Derived alloc] init];
  array->_own = 7;
  [array addObject:@"an element"];
  EXPECT_EQ(array->_own, 7);
  EXPECT_EQ(array.count, 1U);
}

TEST_F(RuntimeTest, constantStringsAnswerAsOthersDo) {
  @autoreleasepool {
    NSString* made = [[NSString alloc] initWithBytes:"abc" length:3 encoding:NSUTF8StringEncoding];
    EXPECT_TRUE([made isEqual:@"abc"]);
    EXPECT_TRUE([@"abc" isEqual:made]);
  }
}

TEST_F(RuntimeTest, aBlockKeepsWhatItCapturedAsLongAsItLives) {
  @autoreleasepool {
    Counted* object = [[Counted alloc] init];
    std::size_t (^block)() = ^{
      return object == nil ? 0 : live();
    };
    object = nil;
    EXPECT_EQ(block(), 1U);
  }
  EXPECT_EQ(live(), 0U);
}

TEST_F(RuntimeTest, anExceptionIsCaughtByItsClassAndThoseAboveItAlone) {
  std::string caught;
  @autoreleasepool {
    @try {
      @try {
        @throw [[Thrown alloc] init];
      } @catch (OtherwiseThrown* exception) {
        caught = "by another class";
      }
    } @catch (NSException* exception) {
      caught = [exception class] == [Thrown class] ? "by the class above" : "something else";
    }
  }
  EXPECT_EQ(caught, "by the class above");
  EXPECT_EQ(objcruntime::liveObjectsOf("Thrown"), 0U);
}

TEST_F(RuntimeTest, exceptionsOfBothLanguagesUnwindFramesOfTheOther) {
  std::string caught;
  try {
    Counted* held = [[Counted alloc] init];
    @try {
      throw std::runtime_error(held == nil ? "" : "of C++");
    } @catch (NSException* exception) {
      caught = "as another's";
    }
  } catch (const std::exception& error) {
    caught = error.what();
  }
  EXPECT_EQ(caught, "of C++");
  EXPECT_EQ(live(), 0U);
  @autoreleasepool {
    try {
      const std::string destroyed(100, ' ');
      try {
        @throw [[Thrown alloc] init];
      } catch (const std::exception&) {
        caught = "as another's";
      }
    } catch (...) {
      caught = "of Objective-C";
    }
  }
  EXPECT_EQ(caught, "of Objective-C");
  EXPECT_EQ(objcruntime::liveObjectsOf("Thrown"), 0U);
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
