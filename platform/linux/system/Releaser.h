#pragma once

namespace audrel::linuxos {

/// Gives an object of a C library back to it, by the library's function `release`.
template <auto release>
struct Releaser {
  template <typename Object>
  void operator()(Object* object) const noexcept {
    release(object);
  }
};

}  // namespace audrel::linuxos
