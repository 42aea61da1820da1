// A disk that is slow while the file $AUDREL_SLOW_DISK exists: preloaded, each flush of a file
// takes a second and a half longer, and writes "b" when it begins and "e" when it has ended to that
// file.

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

namespace {

void note(int slow, char what) {
  [[maybe_unused]] const auto written = write(slow, &what, 1);
}

}  // namespace

extern "C" int fdatasync(int descriptor) {
  const char* const path = std::getenv("AUDREL_SLOW_DISK");
  const int slow = path == nullptr ? -1 : open(path, O_WRONLY | O_APPEND | O_CLOEXEC);
  if (slow >= 0) {
    note(slow, 'b');
    usleep(1'500'000);
  }
  const auto result = static_cast<int>(syscall(SYS_fdatasync, descriptor));
  if (slow >= 0) {
    note(slow, 'e');
    close(slow);
  }
  return result;
}
