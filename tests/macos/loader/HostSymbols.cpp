// What the C and C++ libraries of macOS have and those of Linux have in another shape, by the names
// of makeelf.py. Everything else that a program imports comes from the frameworks and the runtime
// of the tests, the C library of Linux, and LLVM's C++ library, which macOS has too. Names of the
// C++ language itself (exceptions, type information, new and delete) come from the library of this
// process, where LLVM's takes them from as well: there is one of each.

#include <getopt.h>
#include <pthread.h>

#include <csignal>
#include <cstddef>
#include <cstdint>

#include "tests/macos/loader/LoadedProgram.h"

namespace audrel::macho {

long long scriptedTime = 0;

struct SignalAction {
  void (*handler)(int);
  std::uint32_t mask;
  std::int32_t flags;
};

/// macOS keeps a signature before what Linux, too, expects to be zeros at first.
struct Mutex {
  long signature;
  pthread_mutex_t mutex;
};
static_assert(sizeof(Mutex) <= 64, "as large as that of macOS");

}  // namespace audrel::macho

using audrel::macho::Mutex;
using audrel::macho::SignalAction;

extern "C" {

std::uintptr_t macosStackGuard = 0x7A6F6E6521;

int macosSigemptyset(std::uint32_t* set) {
  *set = 0;
  return 0;
}

/// Without flags.
int macosSigaction(int number, const SignalAction* action, SignalAction* previous) {
  struct sigaction replacement{};
  if (action != nullptr) {
    replacement.sa_handler = action->handler;
  }
  struct sigaction replaced{};
  const int result = sigaction(number, action == nullptr ? nullptr : &replacement, &replaced);
  if (previous != nullptr) {
    *previous = {.handler = replaced.sa_handler, .mask = 0, .flags = 0};
  }
  return result;
}

/// Says of a value that an option does not take what it says of one that is missing.
int macosGetoptLong(int count, char** arguments, const char* shortOptions,
                    const option* longOptions, int* index) {
  const int flag = getopt_long(count, arguments, shortOptions, longOptions, index);
  for (const option* known = longOptions; known->name != nullptr; ++known) {
    if (flag == '?' && known->val == optopt) {
      return ':';
    }
  }
  return flag;
}

void macosMutexLock(Mutex* shared) {
  pthread_mutex_lock(&shared->mutex);
}

void macosMutexUnlock(Mutex* shared) {
  pthread_mutex_unlock(&shared->mutex);
}

void macosMutexDestroy(Mutex* shared) {
  pthread_mutex_destroy(&shared->mutex);
}

long long macosSystemClockNow() {
  return audrel::macho::scriptedTime;
}

}  // extern "C"
