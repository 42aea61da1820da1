#include "platform/linux/system/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>

namespace audrel::linuxos {

void openStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
      // The lowest free number, so just the one that is missing. Left open for good.
      [[maybe_unused]] const int opened = open("/dev/null", O_RDWR);
    }
  }
}

}  // namespace audrel::linuxos
