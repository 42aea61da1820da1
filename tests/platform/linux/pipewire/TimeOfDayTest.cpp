// The time of day may be set while somebody waits for the server. It is set here for whoever reads
// it, but not for the kernel: a wait until a time of that day would be over at once.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <ctime>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"

namespace {

std::atomic<bool> isAnHourBehind = false;

}  // namespace

// In front of the C library's own, for all that is loaded into this program.
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static auto* const own =
      reinterpret_cast<int (*)(clockid_t, timespec*)>(dlsym(RTLD_NEXT, "clock_gettime"));
  const int result = own(clock, time);
  if (clock == CLOCK_REALTIME && isAnHourBehind) {
    time->tv_sec -= 3600;
  }
  return result;
}

namespace audrel::pwtest {
namespace {

TEST(TimeOfDay, thatIsSetEndsNoWaitForTheServer) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server);
  const auto process = recorder.waitForProcess(player.pid());
  ASSERT_NE(process, 0U);
  isAnHourBehind = true;
  timespec seen{};
  clock_gettime(CLOCK_REALTIME, &seen);
  ASSERT_LT(seen.tv_sec, std::time(nullptr) - 3000) << "it is set";
  EXPECT_EQ(recorder.startProcess(process), 0);
  EXPECT_TRUE(server.step(10, heard({"music"})));
  EXPECT_EQ(recorder.stop(), 0);
  isAnHourBehind = false;
}

}  // namespace
}  // namespace audrel::pwtest
