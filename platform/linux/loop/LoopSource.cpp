#include "platform/linux/loop/LoopSource.h"

#include <memory>
#include <utility>

namespace audrel::linuxos {

namespace {

using Function = std::function<void()>;

/// Not before the next request.
constexpr gint64 never = -1;

gboolean dispatch(GSource* source, GSourceFunc callback, gpointer data) {
  g_source_set_ready_time(source, never);
  return callback(data);
}

gboolean callFunction(gpointer data) noexcept {
  (*static_cast<const Function*>(data))();
  return G_SOURCE_CONTINUE;
}

void destroyFunction(gpointer data) {
  const std::unique_ptr<Function> owned(static_cast<Function*>(data));
}

GSourceFuncs sourceFunctions{.prepare = nullptr,
                             .check = nullptr,
                             .dispatch = dispatch,
                             .finalize = nullptr,
                             .closure_callback = nullptr,
                             .closure_marshal = nullptr};

}  // namespace

LoopSource::LoopSource(std::function<void()> function, Reentry reentry)
    : source_(g_source_new(&sourceFunctions, sizeof(GSource))) {
  // GLib holds the function for the length of a call, also when the source is destroyed in it.
  g_source_set_callback(source_.get(), callFunction,
                        std::make_unique<Function>(std::move(function)).release(), destroyFunction);
  g_source_set_can_recurse(source_.get(), reentry == Reentry::allowed ? TRUE : FALSE);
  g_source_attach(source_.get(), mainContext().get());
}

LoopSource::~LoopSource() {
  g_source_destroy(source_.get());
}

void LoopSource::callSoon() {
  g_source_set_ready_time(source_.get(), 0);
}

void LoopSource::callAfter(std::chrono::microseconds delay) {
  callAt(now() + delay);
}

void LoopSource::callAt(std::chrono::microseconds time) {
  g_source_set_ready_time(source_.get(), time.count());
}

void LoopSource::cancel() {
  g_source_set_ready_time(source_.get(), never);
}

std::chrono::microseconds LoopSource::now() {
  return std::chrono::microseconds(g_get_monotonic_time());
}

}  // namespace audrel::linuxos
