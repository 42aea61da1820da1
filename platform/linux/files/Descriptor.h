#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace audrel::linuxos {

/// A file descriptor: closed once, and with it. -1: none.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() { close(); }

  int get() const { return descriptor_; }
  int close() noexcept {
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor < 0 ? 0 : ::close(descriptor);
  }

 private:
  int descriptor_;
};

/// What `open` returns, which is called again when a signal interrupts it.
template <typename Open>
Descriptor opened(Open open) {
  int descriptor = -1;
  do {
    descriptor = open();
  } while (descriptor < 0 && errno == EINTR);
  return Descriptor(descriptor);
}

}  // namespace audrel::linuxos
