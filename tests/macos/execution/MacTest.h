#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#import "tests/macos/frameworks/FakeAppKit.h"
#import "tests/macos/frameworks/FakeCoreAudio.h"
#import "tests/macos/frameworks/FakeFoundation.h"

#include "platform/macos/ProgramCall.h"
#include "tests/macos/frameworks/FakeMac.h"
#include "tests/macos/runtime/Runtime.h"

namespace audrel::macos {

/// A test on a fresh Mac. Whatever the adapters made there must be gone at its end, and nothing
/// may have been autoreleased where no pool was.
class MacTest : public testing::Test {
 protected:
  MacTest() {
    // What is made once and then kept.
    (void)NSApplication.sharedApplication;
    logFailedCall("nothing", "nothing");
    mac().takeJournal();
    fakemac::resetHardware();
    liveBefore_ = objcruntime::liveObjects();
    withoutPoolBefore_ = objcruntime::autoreleasedWithoutPool();
  }

  /// After the members of the tests' own are gone.
  ~MacTest() override {
    fakemac::waitForQueues();
    EXPECT_EQ(objcruntime::liveObjects(), liveBefore_);
    EXPECT_EQ(objcruntime::autoreleasedWithoutPool(), withoutPoolBefore_);
  }

  static fakemac::Mac& mac() { return fakemac::mac(); }

  static std::vector<std::string> journal() { return mac().takeJournal(); }

 private:
  fakemac::ScopedMac scopedMac_;
  std::size_t liveBefore_ = 0;
  std::size_t withoutPoolBefore_ = 0;
};

using Lines = std::vector<std::string>;

inline bool contains(const Lines& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

}  // namespace audrel::macos
