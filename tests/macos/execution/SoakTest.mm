// A menu-bar program runs for weeks: what it does again and again leaves nothing behind but what it
// says.

#include <sanitizer/allocator_interface.h>

#include <atomic>
#include <cstdint>

#include "platform/macos/AudioHardware.h"
#include "tests/macos/execution/MacProgramTest.h"

namespace audrel::macos {
namespace {

/// That were allocated and not freed.
std::atomic<std::int64_t> liveBytes = 0;

void count(const volatile void*, std::size_t size) {
  liveBytes += static_cast<std::int64_t>(size);
}

void discount(const volatile void* memory) {
  if (memory != nullptr) {
    liveBytes -=
        static_cast<std::int64_t>(__sanitizer_get_allocated_size(const_cast<const void*>(memory)));
  }
}

class Soak : public MacProgramTest {
 protected:
  static void SetUpTestSuite() {
    ASSERT_NE(__sanitizer_install_malloc_and_free_hooks(count, discount), 0);
  }

  /// And forgets what stands for the Mac's disk and for its user's memory.
  static void record(const char* format, int times) {
    choose(format);
    for (int i = 0; i < times; ++i) {
      open();
      choose("Start Recording");
      fakemac::deliver({counting(4096)});
      choose("Stop Recording");
      mac().files.clear();
      journal();
    }
  }
};

TEST_F(Soak, aRecordingLeavesTheRecordOfItsIOProcedureAndNothingElse) {
  constexpr int times = 50;
  run([] {
    for (const char* format : {"WAV (48 kHz / 16-bit)", "M4A (AAC 256 kbps)"}) {
      record(format, 3);
      const std::int64_t before = liveBytes;
      const std::size_t objectsBefore = objcruntime::liveObjects();
      record(format, times);
      EXPECT_EQ(liveBytes - before, times * std::int64_t{AudioHardware::bytesKeptForEachIOProc});
      EXPECT_EQ(objcruntime::liveObjects(), objectsBefore);
    }
  });
}

}  // namespace
}  // namespace audrel::macos
