// In a process of its own: GIO keeps the connection that it once has.

#include "platform/linux/session/Launcher.h"

#include <gtest/gtest.h>

#include <chrono>

#include "platform/linux/loop/LoopSource.h"
#include "tests/fakes/ScopedVariable.h"
#include "tests/platform/linux/session/harness/MuteBus.h"

namespace audrel::linuxos {
namespace {

TEST(Launcher, givesUpOnABusThatHangsWhileTheMainLoopGoesOn) {
  const sessiontest::MuteBus bus;
  const fakes::ScopedVariable address("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str());
  int ticks = 0;
  LoopSource timer([&] {
    ++ticks;
    timer.callAfter(std::chrono::milliseconds(100));
  });
  timer.callSoon();
  EXPECT_EQ(openUri("https://example.org/"), "the session bus does not answer");
  EXPECT_GT(ticks, 1);
}

}  // namespace
}  // namespace audrel::linuxos
