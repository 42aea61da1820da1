#pragma once

#include <pipewire/pipewire.h>

#include <memory>

namespace audrel::pwtest {

struct FreeThreadLoop {
  void operator()(pw_thread_loop* loop) const { pw_thread_loop_destroy(loop); }
};
struct FreeContext {
  void operator()(pw_context* context) const { pw_context_destroy(context); }
};
struct FreeCore {
  void operator()(pw_core* core) const { pw_core_disconnect(core); }
};
struct FreeStream {
  void operator()(pw_stream* stream) const { pw_stream_destroy(stream); }
};
struct FreeProperties {
  void operator()(pw_properties* properties) const { pw_properties_free(properties); }
};

using OwnedThreadLoop = std::unique_ptr<pw_thread_loop, FreeThreadLoop>;
using OwnedContext = std::unique_ptr<pw_context, FreeContext>;
using OwnedCore = std::unique_ptr<pw_core, FreeCore>;
using OwnedStream = std::unique_ptr<pw_stream, FreeStream>;
using OwnedProperties = std::unique_ptr<pw_properties, FreeProperties>;

/// Keeps a thread loop's thread out.
class Locked {
 public:
  explicit Locked(const OwnedThreadLoop& loop) : loop_(loop.get()) { pw_thread_loop_lock(loop_); }
  ~Locked() { pw_thread_loop_unlock(loop_); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  pw_thread_loop* loop_;
};

}  // namespace audrel::pwtest
