// Loaded into the program ahead of the C library: counts the bytes that are allocated and not yet
// freed, and keeps the sum in the file that AUDREL_LIVE_BYTES names. How much memory the system
// gave the process says less: the allocator keeps some of what is freed, sometimes megabytes.

#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

// The C library's own functions, by the names that stay when theirs are replaced.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

using Counter = std::atomic<std::int64_t>;

Counter countOfTheStart = 0;
Counter* liveBytes = &countOfTheStart;

std::int64_t sizeOf(void* block) {
  return static_cast<std::int64_t>(malloc_usable_size(block));
}

void* counted(void* block) {
  *liveBytes += sizeOf(block);
  return block;
}

/// Before there is a second thread.
__attribute__((constructor)) void showCount() {
  const char* path = std::getenv("AUDREL_LIVE_BYTES");
  const int descriptor = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
  if (descriptor == -1) {
    std::abort();
  }
  void* shared = mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  close(descriptor);
  if (shared == MAP_FAILED) {
    std::abort();
  }
  liveBytes = new (shared) Counter(countOfTheStart.load());
  // What the program starts is not the program.
  unsetenv("LD_PRELOAD");
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
  return counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
  return counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
  const std::int64_t sizeBefore = sizeOf(block);
  void* result = __libc_realloc(block, size);
  const bool failed = result == nullptr && size != 0;
  if (!failed) {
    *liveBytes -= sizeBefore;
  }
  return counted(result);
}

void* memalign(std::size_t alignment, std::size_t size) {
  return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}

int posix_memalign(void** result, std::size_t alignment, std::size_t size) {
  void* block = memalign(alignment, size);
  if (block == nullptr) {
    return ENOMEM;
  }
  *result = block;
  return 0;
}

void free(void* block) {
  *liveBytes -= sizeOf(block);
  __libc_free(block);
}
}
