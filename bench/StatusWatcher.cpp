// A desktop's watcher of status items, which asks nothing of them. Writes "ready" when it has its
// name on the session bus, and "RegisterStatusNotifierItem" for each item. Ends with its standard
// input.

#include <gio/gio.h>
#include <glib-unix.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

void tell(const char* line) {
  std::puts(line);
  std::fflush(stdout);
}

void send(GDBusConnection* connection, GDBusMessage* reply) {
  g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                 nullptr);
  g_object_unref(reply);
}

/// Answers registrations, and that a panel shows the items.
GDBusMessage* handle(GDBusConnection* connection, GDBusMessage* message, gboolean incoming,
                     gpointer /*data*/) {
  if (incoming == FALSE ||
      g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
    return message;
  }
  const std::string_view member = g_dbus_message_get_member(message);
  if (member != "RegisterStatusNotifierItem" && member != "Get") {
    return message;
  }
  GDBusMessage* reply = g_dbus_message_new_method_reply(message);
  if (member == "Get") {
    g_dbus_message_set_body(reply, g_variant_new("(v)", g_variant_new_boolean(TRUE)));
  } else {
    tell("RegisterStatusNotifierItem");
  }
  send(connection, reply);
  g_object_unref(message);
  return nullptr;
}

gboolean quit(gint /*descriptor*/, GIOCondition /*condition*/, gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_REMOVE;
}

}  // namespace

int main() {
  GDBusConnection* connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  if (connection == nullptr) {
    return EXIT_FAILURE;
  }
  g_dbus_connection_add_filter(connection, handle, nullptr, nullptr);
  g_bus_own_name_on_connection(
      connection, "org.kde.StatusNotifierWatcher", G_BUS_NAME_OWNER_FLAGS_NONE,
      [](GDBusConnection*, const gchar*, gpointer) { tell("ready"); }, nullptr, nullptr, nullptr);
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  g_unix_fd_add(STDIN_FILENO, G_IO_HUP, quit, loop);
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  g_object_unref(connection);
}
