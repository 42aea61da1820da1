#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

#include "platform/linux/system/Releaser.h"

/// Ownership of GLib's objects.
namespace audrel::linuxos {

using MainContextHandle = std::unique_ptr<GMainContext, Releaser<g_main_context_unref>>;
using MainLoopHandle = std::unique_ptr<GMainLoop, Releaser<g_main_loop_unref>>;
using SourceHandle = std::unique_ptr<GSource, Releaser<g_source_unref>>;
using VariantHandle = std::unique_ptr<GVariant, Releaser<g_variant_unref>>;
using ErrorHandle = std::unique_ptr<GError, Releaser<g_error_free>>;
using NodeInfoHandle = std::unique_ptr<GDBusNodeInfo, Releaser<g_dbus_node_info_unref>>;
using StringHandle = std::unique_ptr<char, Releaser<g_free>>;
using ConnectionHandle = std::unique_ptr<GDBusConnection, Releaser<g_object_unref>>;
using CancellableHandle = std::unique_ptr<GCancellable, Releaser<g_object_unref>>;

/// The main context of this thread, which everything of ours runs on.
inline MainContextHandle mainContext() {
  return MainContextHandle(g_main_context_ref_thread_default());
}

/// An error's text; a default where a library gave none.
inline std::string messageOf(const ErrorHandle& error) {
  return error != nullptr ? error->message : "unknown error";
}

}  // namespace audrel::linuxos
