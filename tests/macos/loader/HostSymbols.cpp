#include "tests/macos/loader/HostSymbols.h"

#include <dlfcn.h>
#include <getopt.h>
#include <pthread.h>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>

namespace audrel::macho {

long long scriptedTime = 0;

namespace {

// What the C library of macOS has, and that of Linux has not or in another shape.
std::uintptr_t stackGuard = 0x7A6F6E6521;

void zero(void* memory, std::size_t size) {
  std::memset(memory, 0, size);
}

struct SignalAction {
  void (*handler)(int);
  std::uint32_t mask;
  std::int32_t flags;
};

int emptySignalSet(std::uint32_t* set) {
  *set = 0;
  return 0;
}

/// Without flags.
int actOnSignal(int number, const SignalAction* action, SignalAction* previous) {
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
int nextOption(int count, char** arguments, const char* shortOptions, const option* longOptions,
               int* index) {
  const int flag = getopt_long(count, arguments, shortOptions, longOptions, index);
  for (const option* known = longOptions; known->name != nullptr; ++known) {
    if (flag == '?' && known->val == optopt) {
      return ':';
    }
  }
  return flag;
}

/// macOS keeps a signature before what Linux, too, expects to be zeros at first.
struct Mutex {
  long signature;
  pthread_mutex_t mutex;
};
static_assert(sizeof(Mutex) <= 64, "as large as that of macOS");

void lock(Mutex* shared) {
  pthread_mutex_lock(&shared->mutex);
}

void unlock(Mutex* shared) {
  pthread_mutex_unlock(&shared->mutex);
}

void destroy(Mutex* shared) {
  pthread_mutex_destroy(&shared->mutex);
}

long long now() {
  return scriptedTime;
}

void* cxxLibrary() {
  static void* const library = dlopen("libc++.so.1", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    throw std::runtime_error(dlerror());
  }
  return library;
}

}  // namespace

void* hostSymbol(const std::string& name) {
  static const std::map<std::string, void*> own = {
      {"__bzero", reinterpret_cast<void*>(&zero)},
      {"__error", reinterpret_cast<void*>(&__errno_location)},
      {"__exp10", reinterpret_cast<void*>(static_cast<double (*)(double)>(&exp10))},
      {"__stack_chk_guard", &stackGuard},
      {"getopt_long", reinterpret_cast<void*>(&nextOption)},
      {"sigaction", reinterpret_cast<void*>(&actOnSignal)},
      {"sigemptyset", reinterpret_cast<void*>(&emptySignalSet)},
      {"_ZNSt3__15mutex4lockEv", reinterpret_cast<void*>(&lock)},
      {"_ZNSt3__15mutex6unlockEv", reinterpret_cast<void*>(&unlock)},
      {"_ZNSt3__15mutexD1Ev", reinterpret_cast<void*>(&destroy)},
      {"_ZNSt3__16chrono12system_clock3nowEv", reinterpret_cast<void*>(&now)},
  };
  if (const auto found = own.find(name); found != own.end()) {
    return found->second;
  }
  void* const symbol = dlsym(RTLD_DEFAULT, name.c_str());
  return symbol != nullptr ? symbol : dlsym(cxxLibrary(), name.c_str());
}

}  // namespace audrel::macho
