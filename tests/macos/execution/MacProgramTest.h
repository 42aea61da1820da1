#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/RunApplication.h"
#include "tests/fakes/ScopedVariable.h"
#include "tests/macos/execution/MacTest.h"
#include "tests/macos/execution/SteppedPlatform.h"

namespace audrel::macos {

using Bytes = std::vector<std::byte>;

/// `size` bytes that count up from `first`.
inline Bytes counting(std::size_t size, int first = 0) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<std::byte>(static_cast<std::size_t>(first) + i);
  }
  return bytes;
}

/// The program on a Mac where a radio and a game play, and its user.
class MacProgramTest : public MacTest {
 protected:
  MacProgramTest() {
    mac().processes = {{70, 700, "org.example.radio"}, {71, 710, ""}};
    mac().applications = {{700, "Web Radio"}, {710, "game"}};
  }

  /// `happens` while the event loop runs.
  void run(const std::function<void()>& happens) {
    mac().whileRunning = happens;
    SteppedPlatform platform(clock);
    const auto desktop = platform.desktop();
    ASSERT_TRUE(desktop.has_value());
    EXPECT_EQ(runApplication(platform.interfaces(), *desktop), 0);
    @autoreleasepool {
      NSApplication.sharedApplication.delegate = nil;
    }
    mac().whileRunning = nullptr;
  }

  static void open() {
    @autoreleasepool {
      fakemac::openMenu();
    }
  }

  static void choose(const std::string& title) {
    @autoreleasepool {
      NSMenuItem* chosen = fakemac::itemNamed(fakemac::statusItem().menu, title);
      ASSERT_NE(chosen, nil) << title;
      fakemac::choose(chosen);
    }
  }

  /// Names of files tell the local time.
  fakes::ScopedVariable utc{"TZ", "UTC0"};
  SteppedClock clock;
};

}  // namespace audrel::macos
