#pragma once

#include <pipewire/pipewire.h>

#include <memory>
#include <mutex>
#include <utility>

#include "platform/linux/system/Releaser.h"

/// PipeWire's library, and ownership of its objects.
namespace audrel::linuxos {

/// Before anything else of PipeWire's, as often as one likes.
inline void initialisePipeWire() {
  static std::once_flag once;
  std::call_once(once, [] { pw_init(nullptr, nullptr); });
}

using ThreadLoopHandle = std::unique_ptr<pw_thread_loop, Releaser<pw_thread_loop_destroy>>;
using ContextHandle = std::unique_ptr<pw_context, Releaser<pw_context_destroy>>;
using StreamHandle = std::unique_ptr<pw_stream, Releaser<pw_stream_destroy>>;
using ProxyHandle = std::unique_ptr<pw_proxy, Releaser<pw_proxy_destroy>>;
using PropertiesHandle = std::unique_ptr<pw_properties, Releaser<pw_properties_free>>;

/// Holds a thread loop's lock, which is recursive. It keeps the loop's thread out, not the
/// real-time data thread.
class LoopLock {
 public:
  explicit LoopLock(pw_thread_loop* loop) : loop_(loop) { pw_thread_loop_lock(loop_); }
  ~LoopLock() { pw_thread_loop_unlock(loop_); }
  LoopLock(const LoopLock&) = delete;
  LoopLock& operator=(const LoopLock&) = delete;

 private:
  pw_thread_loop* loop_;
};

/// A listener's hook: it is taken out of its list when it goes, if it is in one.
class Hook {
 public:
  Hook() = default;
  ~Hook() { remove(); }
  Hook(const Hook&) = delete;
  Hook& operator=(const Hook&) = delete;

  spa_hook* get() { return &hook_; }

  void remove() {
    if (hook_.link.next != nullptr) {
      spa_hook_remove(&hook_);
      hook_ = {};
    }
  }

 private:
  spa_hook hook_{};
};

/// Ends a stream whose listener the data thread calls. On return that thread is out of the stream.
/// Events that only this end causes may come from within the call.
inline void endStream(StreamHandle& stream, Hook& listener) {
  // This waits for the data thread. Taking the listener out does not (PipeWire 0.3.65): it clears
  // function and argument under a call that may have read the one and not the other.
  pw_stream_disconnect(stream.get());
  listener.remove();
  stream.reset();
}

}  // namespace audrel::linuxos
